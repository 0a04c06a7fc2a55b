// What archives need of the system, over Windows' calls.
#include "src/archive/archive_system.h"
#include "src/files/information/file_times.h"
#include "src/system/tree_system.h"
#include "src/windows/file.h"
#include "src/windows/path.h"

namespace vell::archive {
namespace {

using files::win32_path;

class Win32ArchiveSystem : public ArchiveSystem {
  public:
    files::FileSystem& files() override { return files::system_files(); }
    files::FolderSource& folders() override { return files::system_folders(); }

    Result<NativePath> full_path(const NativePath& path) override {
        return files::system_tree().full_path(path);
    }

    Result<std::unique_ptr<files::File>> open_shared(const NativePath& path) override {
        return opened(path, GENERIC_READ, OPEN_EXISTING);
    }

    Result<std::unique_ptr<files::File>> open_new(const NativePath& path) override {
        return opened(path, GENERIC_WRITE, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT);
    }

    Result<std::unique_ptr<files::File>> open_emptied(const NativePath& path) override {
        // Windows itself refuses such a file, but Wine may empty it.
        const DWORD attributes = GetFileAttributesW(win32_path(path).c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
            return Failure{ErrorCode::Busy};
        return opened(path, GENERIC_WRITE, CREATE_ALWAYS);
    }

    Result<void> create_folder(const NativePath& path) override {
        return files::system_tree().create_folder(path);
    }

    bool is_link(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        const DWORD attributes = GetFileAttributesW(name.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
            return false;
        // Other reparse points, such as files that a cloud service keeps, stand for themselves.
        WIN32_FIND_DATAW found;
        const UniqueFind search(FindFirstFileW(name.c_str(), &found));
        return !search || found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
    }

    params::CalendarTime now() override {
        SYSTEMTIME time;
        GetLocalTime(&time);
        return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    }

    Result<params::CalendarTime> modification_time(const NativePath& path) override {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!GetFileAttributesExW(win32_path(path).c_str(), GetFileExInfoStandard, &data))
            return Failure{last_error()};
        return files::local_time(data.ftLastWriteTime);
    }

    Result<void> set_times(const NativePath& path, const params::CalendarTime& local) override {
        const FILETIME time = VELL_TRY(files::file_time(local));
        constexpr DWORD everyone = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        const UniqueFile file(CreateFileW(win32_path(path).c_str(), FILE_WRITE_ATTRIBUTES, everyone,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file || !SetFileTime(file.get(), nullptr, &time, &time))
            return Failure{last_error()};
        return {};
    }

  private:
    // Others may have the file open, and open it, for reading and writing.
    static Result<std::unique_ptr<files::File>> opened(const NativePath& path, DWORD access,
                                                       DWORD disposition, DWORD flags = 0) {
        constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE;
        UniqueFile handle(
            CreateFileW(win32_path(path).c_str(), access, sharing, nullptr, disposition,
                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN | flags, nullptr));
        if (!handle)
            return Failure{last_error()};
        return files::file_over(std::move(handle));
    }
};

} // namespace

ArchiveSystem& system_archives() {
    static Win32ArchiveSystem system;
    return system;
}

} // namespace vell::archive
