// The file access layer over native handles.
#include "src/system/file_access.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/file.h"
#include "src/windows/storage/file_times.h"
#include "src/windows/storage/final_path.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/private_items.h"
#include "src/windows/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace vell::windows {

using namespace files;

namespace {

class Win32File : public HeldFile {
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
            if (done == 0) // a device that takes no more
                return Failure{ErrorCode::DiskError};
            bytes.remove_prefix(done);
        }
        return {};
    }

    Result<void> set_end_of_file() override {
        if (!SetEndOfFile(handle_.get()))
            return Failure{last_error()};
        return {};
    }

    Result<void> set_times(const NewTimes& times) override {
        return set_file_times(handle_.get(), VELL_TRY(file_times(times)));
    }

    Result<void> close() override {
        if (!handle_.close())
            return Failure{last_error()};
        return {};
    }

    Result<FileTime> modified() override {
        FILETIME time;
        if (!GetFileTime(handle_.get(), nullptr, nullptr, &time))
            return Failure{last_error()};
        return file_time_of(time);
    }

    Result<std::u16string> final_path() override { return final_path_of(handle_.get()); }

  private:
    static constexpr std::size_t largest_transfer = 0x7FFFFFFF;
    UniqueFile handle_;
};

// Where a file really is, with what the system tells of it.
struct FileIdentity {
    BY_HANDLE_FILE_INFORMATION information;
    std::wstring final_path;
};

std::optional<FileIdentity> identity_of(const NativePath& path) {
    const UniqueFile file(CreateFileW(win32_path(path).c_str(), 0, share_all, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    FileIdentity identity;
    if (!file || !GetFileInformationByHandle(file.get(), &identity.information))
        return std::nullopt;
    const DWORD room = GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED);
    identity.final_path.resize(room);
    identity.final_path.resize(GetFinalPathNameByHandleW(file.get(), identity.final_path.data(),
                                                         room, FILE_NAME_NORMALIZED));
    return identity;
}

// By place, and by what the system tells where there are several ways to it (hard links, shares).
// The file index alone is not enough: servers may give 0 for every file, and ReFS has more bits.
bool is_same(const FileIdentity& a, const FileIdentity& b) {
    const auto index = [](const BY_HANDLE_FILE_INFORMATION& information) {
        return std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
    };
    if (index(a.information) != index(b.information))
        return false;
    const bool same_place =
        !a.final_path.empty() && CompareStringOrdinal(a.final_path.c_str(), -1,
                                                      b.final_path.c_str(), -1, TRUE) == CSTR_EQUAL;
    return same_place || (index(a.information) != 0 &&
                          std::memcmp(&a.information, &b.information, sizeof a.information) == 0);
}

ItemKind kind_by(DWORD attributes) {
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? ItemKind::Folder : ItemKind::File;
}

// What the folder tells of a file that nobody may look at, such as the page file.
ItemKind kind_in_folder(const std::wstring& path) {
    WIN32_FIND_DATAW found;
    const UniqueFind search(FindFirstFileW(path.c_str(), &found));
    return search ? kind_by(found.dwFileAttributes) : ItemKind::None;
}

// Windows itself refuses to write such a file, but Wine may not where its user owns the disk.
bool is_read_only(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Others may have the file open, and open it, for reading and writing.
Result<std::unique_ptr<File>> open_for_all(const std::wstring& path, DWORD access,
                                           DWORD disposition, DWORD flags = 0) {
    UniqueFile handle(
        CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN | flags, nullptr));
    if (!handle)
        return Failure{last_error()};
    return file_over(std::move(handle));
}

Result<void> clear_read_only(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Failure{last_error()};
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
        !SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY}))
        return Failure{last_error()};
    return {};
}

// After what ReplaceFileW has failed with a plain renaming is worth a try.
bool is_up_to_renaming(DWORD error) {
    switch (error) {
    // Volumes and servers that cannot replace a file in this way.
    case ERROR_INVALID_FUNCTION:
    case ERROR_NOT_SUPPORTED:
    case ERROR_INVALID_PARAMETER:
    case ERROR_CALL_NOT_IMPLEMENTED:
    // The target has been removed, by others or on the way: the source only lacks the name.
    case ERROR_FILE_NOT_FOUND:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT_2:
        return true;
    default:
        return false;
    }
}

class Win32FileSystem : public FileSystem {
  public:
    Result<std::unique_ptr<File>> open(const NativePath& path, Permission permission) override {
        const DWORD access = permission == Permission::Write ? GENERIC_WRITE : GENERIC_READ;
        const std::wstring name = win32_path(path);
        UniqueFile handle(CreateFileW(name.c_str(), access, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!handle)
            return Failure{last_error()};
        if (permission == Permission::Write && is_read_only(name))
            return Failure{ErrorCode::Busy};
        return file_over(std::move(handle));
    }

    Result<std::unique_ptr<File>> open_shared(const NativePath& path) override {
        return open_for_all(win32_path(path), GENERIC_READ, OPEN_EXISTING);
    }

    Result<std::unique_ptr<File>> open_new(const NativePath& path) override {
        return open_for_all(win32_path(path), GENERIC_WRITE, CREATE_NEW,
                            FILE_FLAG_OPEN_REPARSE_POINT);
    }

    Result<std::unique_ptr<File>> open_to_write(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        if (is_read_only(name))
            return Failure{ErrorCode::Busy};
        return open_for_all(name, GENERIC_WRITE, OPEN_EXISTING);
    }

    Result<std::unique_ptr<File>> open_emptied(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        if (is_read_only(name))
            return Failure{ErrorCode::Busy};
        return open_for_all(name, GENERIC_WRITE, CREATE_ALWAYS);
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

    ItemKind kind_of(const NativePath& path) override {
        const std::wstring name = win32_path(path);
        const DWORD attributes = GetFileAttributesW(name.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES)
            return kind_by(attributes);
        return GetLastError() == ERROR_SHARING_VIOLATION ? kind_in_folder(name) : ItemKind::None;
    }

    bool is_same_file(const NativePath& a, const NativePath& b) override {
        const auto first = identity_of(a);
        const auto second = identity_of(b);
        return first && second && is_same(*first, *second);
    }

    Result<void> copy(const NativePath& source, const NativePath& target,
                      Replace replace) override {
        const std::wstring copy = win32_path(target);
        if (!CopyFileW(win32_path(source).c_str(), copy.c_str(), replace == Replace::No))
            return Failure{last_error()};
        return clear_read_only(copy);
    }

    Result<void> rename(const NativePath& source, const NativePath& target,
                        Replace replace) override {
        const DWORD flags = replace == Replace::Yes ? MOVEFILE_REPLACE_EXISTING : 0;
        if (!MoveFileExW(win32_path(source).c_str(), win32_path(target).c_str(), flags))
            return Failure{last_error()};
        return {};
    }

    Result<void> replace(const NativePath& source, const NativePath& target) override {
        // Where the caller may not set permissions, the file is replaced without them.
        constexpr DWORD flags = REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS;
        if (ReplaceFileW(win32_path(target).c_str(), win32_path(source).c_str(), nullptr, flags,
                         nullptr, nullptr))
            return {};
        const DWORD error = GetLastError();
        if (is_up_to_renaming(error))
            return rename(source, target, Replace::Yes);
        // The number says that nothing has changed because the target could not be removed.
        if (error == ERROR_UNABLE_TO_REMOVE_REPLACED)
            return Failure{ErrorCode::Busy};
        return Failure{error_from_win32(static_cast<std::int32_t>(error))};
    }

    Result<void> remove(const NativePath& path) override {
        if (!DeleteFileW(win32_path(path).c_str()))
            return Failure{last_error()};
        return {};
    }

    Result<std::unique_ptr<File>> open_private(const NativePath& path,
                                               const NativePath& like) override {
        const DWORD attributes = GetFileAttributesW(win32_path(like).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return Failure{last_error()};
        UniqueFile handle =
            create_private_file(win32_path(path), 0,
                                (attributes & FILE_ATTRIBUTE_ENCRYPTED) | FILE_ATTRIBUTE_NORMAL |
                                    FILE_FLAG_SEQUENTIAL_SCAN);
        if (!handle)
            return Failure{last_error()};
        return file_over(std::move(handle));
    }

    Result<std::unique_ptr<File>> open_temporary() override {
        const NativePath path = VELL_TRY(temporary_name({}));
        UniqueFile handle = create_private_file(
            win32_path(path), 0, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
        if (!handle)
            return Failure{last_error()};
        return file_over(std::move(handle));
    }

    Result<NativePath> temporary_name(std::u16string_view extension) override {
        const std::wstring folder = VELL_TRY(temporary_folder());
        std::wstring name = folder + L"VELLTEMP{" + VELL_TRY(random_uuid()) + L"}.tmp";
        if (!extension.empty()) {
            constexpr std::size_t longest_kept = 100;
            name.resize(name.size() - 3); // "tmp"
            name += to_wide(extension.substr(0, longest_kept));
        }
        return NativePath{to_utf16(name), std::nullopt};
    }
};

} // namespace

std::unique_ptr<HeldFile> file_over(UniqueFile handle) {
    return std::make_unique<Win32File>(std::move(handle));
}

FileSystem& file_system() {
    static Win32FileSystem instance;
    return instance;
}

} // namespace vell::windows
