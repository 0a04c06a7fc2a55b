// The tree of files and folders over Windows' calls and its shell.
#include "src/files/paths/path_parts.h"
#include "src/system/tree_system.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/held_items.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/reparse_point.h"
#include "src/windows/text.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace vell::windows {

using namespace files;

namespace {

constexpr std::wstring_view verbatim = L"\\\\?\\";
constexpr std::wstring_view verbatim_network = L"\\\\?\\UNC\\";

std::wstring without_verbatim_prefix(std::wstring path) {
    if (path.starts_with(verbatim_network))
        return L"\\\\" + path.substr(verbatim_network.size());
    return path.starts_with(verbatim) ? path.substr(verbatim.size()) : path;
}

// The root of the volume that holds a path; empty when the system cannot tell.
std::wstring volume_of(const NativePath& path) {
    std::wstring root(path.wide.size() + MAX_PATH, L'\0');
    if (!GetVolumePathNameW(win32_path(path).c_str(), root.data(), static_cast<DWORD>(root.size())))
        return {};
    root.resize(root.find(L'\0'));
    return without_verbatim_prefix(root);
}

// Calls `visit` with what a folder holds, until it fails.
template <typename Visit>
Result<void> for_each_item(const NativePath& folder, Visit visit) {
    NativePath pattern = folder;
    pattern.wide += pattern.wide.ends_with(u'\\') ? u"*" : u"\\*";
    WIN32_FIND_DATAW found;
    const UniqueFind search(FindFirstFileExW(win32_path(pattern).c_str(), FindExInfoBasic, &found,
                                             FindExSearchNameMatch, nullptr,
                                             FIND_FIRST_EX_LARGE_FETCH));
    if (!search)
        return Failure{last_error()};
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..")
            VELL_TRY(visit(found));
    } while (FindNextFileW(search.get(), &found));
    if (GetLastError() != ERROR_NO_MORE_FILES)
        return Failure{last_error()};
    return {};
}

constexpr std::size_t unit_count = 0x10000;
using CaseTable = std::array<wchar_t, unit_count>;

// The capital of every character. Without linguistic casing the system maps by the rules of its
// file systems, unit by unit.
std::unique_ptr<const CaseTable> make_case_table() {
    const auto every = std::make_unique<CaseTable>();
    for (std::size_t i = 0; i < unit_count; ++i)
        (*every)[i] = static_cast<wchar_t>(i);
    auto table = std::make_unique<CaseTable>(*every);
    constexpr int count = unit_count;
    // Nothing but a lack of memory keeps it from that; names are compared as they stand then.
    if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, every->data(), count, table->data(),
                      count, nullptr, nullptr, 0) != count)
        *table = *every;
    return table;
}

class Win32Tree : public TreeSystem {
  public:
    Result<std::u16string> absolute_path(const std::u16string& path) override {
        return to_utf16(VELL_TRY(full_wide_path(to_wide(path))));
    }

    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override {
        return CompareStringOrdinal(reinterpret_cast<const wchar_t*>(a.data()),
                                    static_cast<int>(a.size()),
                                    reinterpret_cast<const wchar_t*>(b.data()),
                                    static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
    }

    void fold_case(std::u16string& name) override {
        static const std::unique_ptr<const CaseTable> capitals = make_case_table();
        for (char16_t& unit : name)
            unit = static_cast<char16_t>((*capitals)[unit]);
    }

    bool on_same_volume(const NativePath& a, const NativePath& b) override {
        const std::wstring volume = volume_of(a);
        return !volume.empty() && equal_ignoring_case(to_utf16(volume), to_utf16(volume_of(b)));
    }

    Result<void> create_folder(const NativePath& path) override {
        if (!CreateDirectoryW(win32_path(path).c_str(), nullptr))
            return Failure{last_error()};
        return {};
    }

    Result<void> remove_folder(const NativePath& path) override {
        if (RemoveDirectoryW(win32_path(path).c_str()))
            return {};
        return Failure{GetLastError() == ERROR_DIR_NOT_EMPTY ? ErrorCode::Busy : last_error()};
    }

    Result<void> move(const NativePath& source, const NativePath& target) override {
        if (!MoveFileW(win32_path(source).c_str(), win32_path(target).c_str()))
            return Failure{last_error()};
        return {};
    }

    bool is_link(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        const DWORD attributes = GetFileAttributesW(name.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
            return false;
        WIN32_FIND_DATAW found;
        const UniqueFind search(FindFirstFileW(name.c_str(), &found));
        return !search || leads_elsewhere(found);
    }

    Result<std::unique_ptr<HeldItem>> hold(const NativePath& path, FollowLink follow) override {
        return hold_item(path, follow);
    }

    Result<void> for_each_below(const NativePath& folder, const VisitItem& visit) override {
        std::vector<NativePath> open{folder};
        NativePath current;
        const auto visit_found = [&](const WIN32_FIND_DATAW& found) -> Result<void> {
            const bool is_folder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
            ItemBelow item{current, is_folder ? ItemKind::Folder : ItemKind::File,
                           is_folder && leads_elsewhere(found)};
            if (!item.path.wide.ends_with(u'\\'))
                item.path.wide += u'\\';
            item.path.wide += to_utf16(found.cFileName);
            VELL_TRY(visit(item));
            if (is_folder && !item.is_link)
                open.push_back(std::move(item.path));
            return {};
        };
        while (!open.empty()) {
            current = std::move(open.back());
            open.pop_back();
            VELL_TRY(for_each_item(current, visit_found));
        }
        return {};
    }
};

} // namespace

TreeSystem& tree() {
    static Win32Tree instance;
    return instance;
}

} // namespace vell::windows
