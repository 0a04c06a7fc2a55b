#include "src/system/item_properties.h"
#include "src/windows/handle.h"
#include "src/windows/path.h"

namespace vell::files {
namespace {

static_assert(bit(Attribute::ReadOnly) == FILE_ATTRIBUTE_READONLY);
static_assert(bit(Attribute::Hidden) == FILE_ATTRIBUTE_HIDDEN);
static_assert(bit(Attribute::Folder) == FILE_ATTRIBUTE_DIRECTORY);
static_assert(bit(Attribute::Archive) == FILE_ATTRIBUTE_ARCHIVE);
static_assert(bit(Attribute::Device) == FILE_ATTRIBUTE_DEVICE);

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
        constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
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
};

} // namespace

ItemProperties& system_properties() {
    static Win32ItemProperties properties;
    return properties;
}

} // namespace vell::files
