// The tree of files and folders over Windows' calls and its shell.
#include "src/files/paths/path_parts.h"
#include "src/system/tree_system.h"
#include "src/windows/handle.h"
#include "src/windows/path.h"
#include "src/windows/text.h"

#include <shellapi.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace vell::files {
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

// A folder whose contents stand somewhere else.
bool is_folder_link(const WIN32_FIND_DATAW& found) {
    constexpr DWORD wanted = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    // Wine gives no tag to a folder that is a symbolic link of the system below it.
    const DWORD tag = found.dwReserved0;
    return (found.dwFileAttributes & wanted) == wanted &&
           (tag == 0 || IsReparseTagNameSurrogate(tag));
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

using ShellFileOperation = int(WINAPI*)(SHFILEOPSTRUCTW*);

// Null on a system without a shell.
ShellFileOperation shell_file_operation() {
    static const auto operation = [] {
        const HMODULE shell = LoadLibraryExW(L"shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        void* const address =
            shell ? reinterpret_cast<void*>(GetProcAddress(shell, "SHFileOperationW")) : nullptr;
        return reinterpret_cast<ShellFileOperation>(address);
    }();
    return operation;
}

// A list of one path, which a second zero ends.
std::wstring path_list(const NativePath& path) {
    return to_wide(path.wide) + L'\0';
}

ShellOutcome run_shell_operation(SHFILEOPSTRUCTW operation, ShellMessages messages) {
    if (messages == ShellMessages::Suppressed)
        operation.fFlags |= FOF_SILENT | FOF_NOERRORUI | FOF_NOCONFIRMATION;
    const int code = shell_file_operation()(&operation);
    return {code, operation.fAnyOperationsAborted != FALSE};
}

class Win32Tree : public TreeSystem {
  public:
    FileSystem& files() override { return system_files(); }

    Result<NativePath> full_path(const NativePath& path) override {
        const std::wstring given = to_wide(path.wide);
        const std::wstring plain = without_verbatim_prefix(given);
        const std::wstring full = VELL_TRY(full_wide_path(plain));
        if (plain != given && full != plain)
            return Failure{ErrorCode::BadName};
        return NativePath{to_utf16(full), std::nullopt};
    }

    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override {
        return CompareStringOrdinal(reinterpret_cast<const wchar_t*>(a.data()),
                                    static_cast<int>(a.size()),
                                    reinterpret_cast<const wchar_t*>(b.data()),
                                    static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
    }

    bool on_same_volume(const NativePath& a, const NativePath& b) override {
        const std::wstring volume = volume_of(a);
        return !volume.empty() && equal_ignoring_case(to_utf16(volume), to_utf16(volume_of(b)));
    }

    std::uint32_t tick_count() override { return GetTickCount(); }

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

    bool is_link(const NativePath& folder) override {
        WIN32_FIND_DATAW found;
        const UniqueFind search(FindFirstFileW(win32_path(folder).c_str(), &found));
        return search && is_folder_link(found);
    }

    Result<void> for_each_below(const NativePath& folder, const VisitItem& visit) override {
        std::vector<NativePath> open{folder};
        NativePath current;
        const auto visit_found = [&](const WIN32_FIND_DATAW& found) -> Result<void> {
            const bool is_folder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
            ItemBelow item{current, is_folder ? ItemKind::Folder : ItemKind::File,
                           is_folder_link(found)};
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

    bool has_shell_operations() override { return shell_file_operation() != nullptr; }

    ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                            ShellMessages messages) override {
        const std::wstring from = path_list(folder);
        const std::wstring to = path_list(target);
        SHFILEOPSTRUCTW operation{};
        operation.hwnd = messages == ShellMessages::Shown ? GetForegroundWindow() : nullptr;
        operation.wFunc = FO_COPY;
        operation.pFrom = from.c_str();
        operation.pTo = to.c_str();
        operation.fFlags = FOF_SIMPLEPROGRESS | FOF_NOCONFIRMMKDIR;
        operation.lpszProgressTitle = L"Copying Folder...";
        return run_shell_operation(operation, messages);
    }

    ShellOutcome shell_delete(const NativePath& folder, void* owner,
                              ShellMessages messages) override {
        const std::wstring from = path_list(folder);
        SHFILEOPSTRUCTW operation{};
        operation.hwnd = static_cast<HWND>(owner);
        operation.wFunc = FO_DELETE;
        operation.pFrom = from.c_str();
        operation.fFlags = FOF_SIMPLEPROGRESS | FOF_NOCONFIRMATION;
        return run_shell_operation(operation, messages);
    }

    bool confirm(void* owner, const std::u16string& question) override {
        MessageBeep(0);
        return MessageBoxW(static_cast<HWND>(owner), as_wide(question), L"",
                           MB_TASKMODAL | MB_ICONHAND | MB_OKCANCEL) == IDOK;
    }
};

} // namespace

TreeSystem& system_tree() {
    static Win32Tree tree;
    return tree;
}

} // namespace vell::files
