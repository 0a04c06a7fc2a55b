// Final paths by the handles that lead to items.
#include "src/windows/storage/final_path.h"

#include "src/windows/parts.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <utility>

namespace vell::windows {

using namespace files;

namespace {

class HeldHandle : public Hold {
  public:
    explicit HeldHandle(UniqueFile handle) : handle_(std::move(handle)) {}

  private:
    UniqueFile handle_;
};

class Win32FinalPaths : public FinalPaths {
  public:
    Result<std::u16string> of(const NativePath& path) override {
        const UniqueFile item(CreateFileW(win32_path(path).c_str(), 0, share_all, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!item)
            return Failure{last_error()};
        return final_path_of(item.get());
    }

    // Sharing modes count for those alone who ask for the contents, so a right to them is needed:
    // that of listing, or that of passing through where the list is closed to the user.
    Result<HeldFolder> hold(const NativePath& folder) override {
        const std::wstring name = win32_path(folder);
        const auto open = [&](DWORD access) {
            return UniqueFile(CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                                          nullptr));
        };
        UniqueFile handle = open(FILE_LIST_DIRECTORY);
        if (!handle && GetLastError() == ERROR_ACCESS_DENIED)
            handle = open(FILE_TRAVERSE);
        if (!handle)
            return Failure{last_error()};
        std::u16string path = final_path_of(handle.get());
        return HeldFolder{std::move(path), std::make_unique<HeldHandle>(std::move(handle))};
    }
};

} // namespace

std::u16string final_path_of(HANDLE item) {
    constexpr std::u16string_view verbatim = u"\\\\?\\";
    constexpr std::u16string_view network = u"\\\\?\\UNC\\";
    constexpr DWORD flags = FILE_NAME_NORMALIZED | VOLUME_NAME_DOS;
    std::wstring wide(MAX_PATH, L'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(wide.size());
        const DWORD length = GetFinalPathNameByHandleW(item, wide.data(), room, flags);
        if (length == 0)
            return {};
        const bool is_complete = length < room;
        wide.resize(length);
        if (is_complete)
            break;
    }
    std::u16string path = to_utf16(wide);
    if (path.starts_with(network))
        return u"\\\\" + path.substr(network.size());
    if (!path.starts_with(verbatim))
        return path;
    path.erase(0, verbatim.size());
    return path.size() >= 2 && path[1] == u':' ? path : std::u16string();
}

FinalPaths& final_paths() {
    static Win32FinalPaths instance;
    return instance;
}

} // namespace vell::windows
