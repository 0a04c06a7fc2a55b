#include "src/system/item_properties.h"
#include "src/windows/desktop/com.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/code_signature.h"
#include "src/windows/storage/file_times.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <shellapi.h>

namespace vell::windows {

using namespace files;

namespace {

static_assert(bit(Attribute::ReadOnly) == FILE_ATTRIBUTE_READONLY);
static_assert(bit(Attribute::Hidden) == FILE_ATTRIBUTE_HIDDEN);
static_assert(bit(Attribute::Folder) == FILE_ATTRIBUTE_DIRECTORY);
static_assert(bit(Attribute::Archive) == FILE_ATTRIBUTE_ARCHIVE);
static_assert(bit(Attribute::Device) == FILE_ATTRIBUTE_DEVICE);

Result<UniqueFile> open_for_times(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Failure{last_error()};
    const bool is_folder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    // A file is not read, and so found whoever has it open.
    UniqueFile item(CreateFileW(
        path.c_str(), is_folder ? GENERIC_READ : 0, is_folder ? FILE_SHARE_READ : 0, nullptr,
        OPEN_EXISTING, is_folder ? FILE_FLAG_BACKUP_SEMANTICS : FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!item)
        return Failure{last_error()};
    return item;
}

class Win32ItemProperties : public ItemProperties {
  public:
    Result<std::uint32_t> attributes(const NativePath& path) override {
        const DWORD attributes = GetFileAttributesW(win32_path(path).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return Failure{last_error()};
        return std::uint32_t{attributes};
    }

    Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) override {
        // 0 would leave them as they are.
        const DWORD value = attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
        if (!SetFileAttributesW(win32_path(path).c_str(), value))
            return Failure{last_error()};
        return {};
    }

    Result<std::uint64_t> size(const NativePath& path) override {
        // Reading attributes alone meets no other opener's sharing mode.
        const UniqueFile file(CreateFileW(win32_path(path).c_str(), FILE_READ_ATTRIBUTES, share_all,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return Failure{last_error()};
        if (GetFileType(file.get()) != FILE_TYPE_DISK)
            return std::uint64_t{0};
        LARGE_INTEGER size;
        if (!GetFileSizeEx(file.get(), &size))
            return Failure{last_error()};
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    Result<bool> is_unused(const NativePath& path, Permission permission) override {
        const DWORD access = permission == Permission::Write ? GENERIC_WRITE : GENERIC_READ;
        const UniqueFile file(CreateFileW(win32_path(path).c_str(), access, 0, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (file)
            return true;
        if (GetLastError() == ERROR_SHARING_VIOLATION)
            return false;
        return Failure{last_error()};
    }

    Result<params::CalendarTime> time(const NativePath& path, ItemTime which) override {
        const UniqueFile item = VELL_TRY(open_for_times(win32_path(path)));
        FILETIME created;
        FILETIME accessed;
        FILETIME modified;
        if (!GetFileTime(item.get(), &created, &accessed, &modified))
            return Failure{last_error()};
        return local_time(which == ItemTime::Created    ? created
                          : which == ItemTime::Accessed ? accessed
                                                        : modified);
    }

    Result<params::CalendarTime> local_time_of(FileTime time) override {
        const auto units = static_cast<std::uint64_t>(time);
        return local_time({static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)});
    }

    Result<void> set_times(const NativePath& path, const NewTimes& times) override {
        const FileTimes converted = VELL_TRY(file_times(times));
        // Folders need the backup flag; others may have the item open meanwhile.
        const UniqueFile item(CreateFileW(win32_path(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                          share_all, nullptr, OPEN_EXISTING,
                                          FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!item)
            return Failure{last_error()};
        return set_file_times(item.get(), converted);
    }

    Result<std::u16string> type_name(const std::u16string& path, std::uint32_t attributes,
                                     TypeBy by) override {
        const UINT by_name = by == TypeBy::Name ? SHGFI_USEFILEATTRIBUTES : 0;
        const ComApartment com;
        SHFILEINFOW info{};
        if (!SHGetFileInfoW(as_wide(path), attributes, &info, sizeof info,
                            SHGFI_TYPENAME | by_name))
            return Failure{ErrorCode::NotAvailable};
        return to_utf16(info.szTypeName);
    }

    Result<CodeSignature> code_signature(const NativePath& path) override {
        return windows::code_signature(path);
    }
};

} // namespace

ItemProperties& properties() {
    static Win32ItemProperties instance;
    return instance;
}

} // namespace vell::windows
