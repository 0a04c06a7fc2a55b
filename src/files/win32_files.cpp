// The file access layer over native handles.
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "src/files/file_access.h"

#include <algorithm>

namespace vell::files {
namespace {

// Lengths from which a path may be refused unless it has the "\\?\" prefix: MAX_PATH less the room
// for a short name that folders need.
constexpr std::size_t long_path_length = MAX_PATH - 12;

// The path in the form that has no limit of length, where it needs it.
std::wstring win32_path(const NativePath& path) {
    std::wstring wide = to_wide(path.wide);
    if (wide.size() < long_path_length || wide.starts_with(L"\\\\?\\") ||
        wide.starts_with(L"\\\\.\\"))
        return wide;
    std::wstring full(wide.size() + MAX_PATH, L'\0');
    const DWORD length =
        GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0 || length >= full.size())
        return wide; // the call that gets it reports what is wrong with it
    full.resize(length);
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

class Win32File : public File {
  public:
    explicit Win32File(UniqueFile handle) : handle_(std::move(handle)) {}

    Result<std::uint64_t> size() override {
        if (GetFileType(handle_.get()) != FILE_TYPE_DISK)
            return std::uint64_t{0};
        LARGE_INTEGER size;
        if (!GetFileSizeEx(handle_.get(), &size))
            return Failure{last_error()};
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    Result<void> seek(SeekFrom from, std::int64_t offset) override {
        const DWORD method = from == SeekFrom::Start ? FILE_BEGIN
                             : from == SeekFrom::End ? FILE_END
                                                     : FILE_CURRENT;
        if (from == SeekFrom::Start && offset < 0)
            return Failure{ErrorCode::BeforeStart};
        LARGE_INTEGER distance;
        distance.QuadPart = offset;
        if (SetFilePointerEx(handle_.get(), distance, nullptr, method))
            return {};
        return Failure{GetLastError() == ERROR_NEGATIVE_SEEK ? ErrorCode::BeforeStart
                                                             : last_error()};
    }

    Result<std::size_t> read(std::span<char> buffer) override {
        const DWORD wanted =
            static_cast<DWORD>(std::min<std::size_t>(buffer.size(), largest_transfer));
        DWORD done = 0;
        if (ReadFile(handle_.get(), buffer.data(), wanted, &done, nullptr))
            return std::size_t{done};
        const DWORD error = GetLastError();
        if (error == ERROR_HANDLE_EOF || error == ERROR_BROKEN_PIPE)
            return std::size_t{0};
        return Failure{error_from_win32(static_cast<std::int32_t>(error))};
    }

    Result<void> write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const DWORD wanted =
                static_cast<DWORD>(std::min<std::size_t>(bytes.size(), largest_transfer));
            DWORD done = 0;
            if (!WriteFile(handle_.get(), bytes.data(), wanted, &done, nullptr))
                return Failure{last_error()};
            bytes.remove_prefix(done);
        }
        return {};
    }

    Result<void> set_end_of_file() override {
        if (!SetEndOfFile(handle_.get()))
            return Failure{last_error()};
        return {};
    }

    Result<void> close() override {
        if (!CloseHandle(handle_.release()))
            return Failure{last_error()};
        return {};
    }

  private:
    static constexpr std::size_t largest_transfer = 0x7FFFFFFF;
    UniqueFile handle_;
};

class Win32FileSystem : public FileSystem {
  public:
    Result<std::unique_ptr<File>> open(const NativePath& path, Permission permission) override {
        const DWORD access = permission == Permission::Write ? GENERIC_WRITE : GENERIC_READ;
        UniqueFile handle(CreateFileW(win32_path(path).c_str(), access, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!handle)
            return Failure{last_error()};
        return std::make_unique<Win32File>(std::move(handle));
    }

    Result<void> create_new(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        if (GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES)
            return Failure{ErrorCode::AlreadyExists};
        const UniqueFile handle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!handle)
            return Failure{last_error()};
        return {};
    }
};

} // namespace

FileSystem& system_files() {
    static Win32FileSystem files;
    return files;
}

} // namespace vell::files
