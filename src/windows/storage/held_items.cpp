#include "src/windows/storage/held_items.h"

#include "src/windows/handle.h"
#include "src/windows/storage/file.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/reparse_point.h"
#include "src/windows/text.h"

#include <winternl.h>

#include <atomic>

namespace vell::windows {

using namespace files;

namespace {

// How an item is opened by its name in a folder.
struct Opening {
    ACCESS_MASK access;
    ULONG share;
    ULONG disposition;
    ULONG options;
};

// Without FILE_SHARE_DELETE nobody renames or removes the item, nor a folder above it. That counts
// for handles that may read or write only.
constexpr ULONG share = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr ACCESS_MASK holding = FILE_READ_DATA | FILE_READ_ATTRIBUTES;
// Where somebody is not to read it, or others keep it to themselves, it is not held so firmly. What
// is done in it is done there all the same.
constexpr ACCESS_MASK looking = FILE_READ_ATTRIBUTES;
constexpr Opening writing{GENERIC_WRITE | FILE_READ_ATTRIBUTES, share, FILE_CREATE,
                          FILE_NON_DIRECTORY_FILE | FILE_SEQUENTIAL_ONLY};

bool is_refusal(ErrorCode error) {
    return error == ErrorCode::Busy;
}

// A name, and neither a path nor a stream of a file. An empty one would be the folder itself.
bool is_name(std::u16string_view name) {
    return !name.empty() && name.find_first_of(u"\\/:") == name.npos && name != u"." &&
           name != u"..";
}

// A name in an open folder, as the system takes it.
class NameIn {
  public:
    NameIn(HANDLE folder, std::u16string_view name, ULONG attributes) {
        // The system does not write to the name.
        auto* const units = const_cast<wchar_t*>(reinterpret_cast<const wchar_t*>(name.data()));
        const auto bytes = static_cast<USHORT>(name.size() * sizeof(wchar_t));
        text_ = {bytes, bytes, units};
        InitializeObjectAttributes(&object_, &text_, attributes, folder, nullptr);
    }
    NameIn(const NameIn&) = delete;
    NameIn& operator=(const NameIn&) = delete;

    OBJECT_ATTRIBUTES* get() { return &object_; }

  private:
    UNICODE_STRING text_;
    OBJECT_ATTRIBUTES object_;
};

NTSTATUS open_at(HANDLE folder, std::u16string_view name, const Opening& opening, ULONG attributes,
                 HANDLE& handle) {
    NameIn object(folder, name, attributes);
    IO_STATUS_BLOCK status;
    constexpr ULONG options = FILE_OPEN_REPARSE_POINT | FILE_SYNCHRONOUS_IO_NONALERT;
    return NtCreateFile(&handle, opening.access | SYNCHRONIZE, object.get(), &status, nullptr,
                        FILE_ATTRIBUTE_NORMAL, opening.share, opening.disposition,
                        opening.options | options, nullptr, 0);
}

// Opens by a name in an open folder. The folder may have been made a link where it stands, as an
// empty one can: OBJ_DONT_REPARSE has the system refuse that.
Result<UniqueFile> open_in(const UniqueFile& folder, std::u16string_view name,
                           const Opening& opening) {
    constexpr ULONG dont_reparse = 0x1000; // of Windows 10; those before it refuse the bit
    constexpr auto invalid_parameter = static_cast<NTSTATUS>(0xC000000D);
    static std::atomic<ULONG> attributes = OBJ_CASE_INSENSITIVE | dont_reparse;
    HANDLE handle = INVALID_HANDLE_VALUE;
    NTSTATUS status = open_at(folder.get(), name, opening, attributes, handle);
    if (status == invalid_parameter && (attributes & dont_reparse) != 0) {
        status = open_at(folder.get(), name, opening, OBJ_CASE_INSENSITIVE, handle);
        if (status >= 0)
            attributes = OBJ_CASE_INSENSITIVE;
    }
    if (status < 0)
        return Failure{error_from_win32(static_cast<std::int32_t>(RtlNtStatusToDosError(status)))};
    return UniqueFile(handle);
}

// Wine opens what a link of the system below leads to, and tells of the link by its path only.
bool is_link_by_path(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

class Win32HeldItem : public HeldItem {
  public:
    Win32HeldItem(UniqueFile handle, const FILE_ATTRIBUTE_TAG_INFO& information, std::wstring path)
        : handle_(std::move(handle)), information_(information), path_(std::move(path)) {}

    // `seems_link` by its path: that of a reparse point which stands for itself does, too.
    static Result<std::unique_ptr<HeldItem>> over(UniqueFile handle, std::wstring path,
                                                  bool seems_link) {
        FILE_ATTRIBUTE_TAG_INFO information;
        if (!GetFileInformationByHandleEx(handle.get(), FileAttributeTagInfo, &information,
                                          sizeof information))
            return Failure{last_error()};
        if (seems_link && (information.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
            information = {information.FileAttributes | FILE_ATTRIBUTE_REPARSE_POINT,
                           IO_REPARSE_TAG_SYMLINK};
        return std::unique_ptr<HeldItem>(
            std::make_unique<Win32HeldItem>(std::move(handle), information, std::move(path)));
    }

    ItemKind kind() const override {
        return information_.FileAttributes & FILE_ATTRIBUTE_DIRECTORY ? ItemKind::Folder
                                                                      : ItemKind::File;
    }
    bool is_link() const override { return leads_elsewhere(information_); }

    Result<std::unique_ptr<HeldItem>> hold(std::u16string_view name) override {
        VELL_TRY(check(name));
        Opening opening{holding, share, FILE_OPEN, 0};
        auto handle = open_in(handle_, name, opening);
        if (!handle && is_refusal(handle.error())) {
            opening.access = looking;
            handle = open_in(handle_, name, opening);
        }
        std::wstring path = path_of(name);
        const bool seems_link = is_link_by_path(path);
        return over(VELL_TRY(std::move(handle)), std::move(path), seems_link);
    }

    Result<std::unique_ptr<HeldItem>> make_folder(std::u16string_view name) override {
        VELL_TRY(check(name));
        return over(
            VELL_TRY(open_in(handle_, name, {holding, share, FILE_CREATE, FILE_DIRECTORY_FILE})),
            path_of(name), false);
    }

    Result<std::unique_ptr<HeldFile>> open_new(std::u16string_view name) override {
        VELL_TRY(check(name));
        return file_over(VELL_TRY(open_in(handle_, name, writing)));
    }

    Result<std::unique_ptr<HeldFile>> open_emptied(std::u16string_view name) override {
        VELL_TRY(check(name));
        if (is_read_only(name))
            return Failure{ErrorCode::Busy};
        Opening opening = writing;
        opening.disposition = FILE_OVERWRITE_IF;
        return file_over(VELL_TRY(open_in(handle_, name, opening)));
    }

  private:
    std::wstring path_of(std::u16string_view name) const {
        std::wstring path = path_;
        if (!path.ends_with(L'\\'))
            path += L'\\';
        return path += to_wide(name);
    }

    // By its folder's handle an item could be made that no path leads to, and nobody could remove.
    Result<void> check(std::u16string_view name) const {
        constexpr std::size_t longest_path = 32'767;
        if (kind() != ItemKind::Folder || is_link() || !is_name(name))
            return Failure{ErrorCode::BadName};
        if (path_.size() + 1 + name.size() > longest_path)
            return Failure{ErrorCode::PathTooLong};
        return {};
    }

    // Windows itself refuses to write such a file, but Wine may not where its user owns the disk.
    bool is_read_only(std::u16string_view name) const {
        const auto item =
            open_in(handle_, name, {looking, share | FILE_SHARE_DELETE, FILE_OPEN, 0});
        FILE_BASIC_INFO information;
        return item &&
               GetFileInformationByHandleEx(item->get(), FileBasicInfo, &information,
                                            sizeof information) &&
               (information.FileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    }

    UniqueFile handle_;
    FILE_ATTRIBUTE_TAG_INFO information_;
    std::wstring path_; // as it was, from its root on, in the form that has no limit
};

} // namespace

Result<std::unique_ptr<HeldItem>> hold_item(const NativePath& path, FollowLink follow) {
    const std::wstring name = win32_path(path);
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (follow == FollowLink::Yes ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    const auto open = [&](DWORD access) {
        return UniqueFile(
            CreateFileW(name.c_str(), access, share, nullptr, OPEN_EXISTING, flags, nullptr));
    };
    UniqueFile handle = open(holding);
    if (!handle && is_refusal(last_error()))
        handle = open(looking);
    if (!handle)
        return Failure{last_error()};
    std::wstring full = without_length_limit(VELL_TRY(full_wide_path(name)));
    const bool seems_link = follow == FollowLink::No && is_link_by_path(full);
    return Win32HeldItem::over(std::move(handle), std::move(full), seems_link);
}

} // namespace vell::windows
