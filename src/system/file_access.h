// The file access layer: what every function that touches a file's bytes goes through.
//
// The engines know only these interfaces; tests and fuzzers run them over memory, the plug-in over
// the system's files.
#pragma once

#include "src/base/result.h"
#include "src/params/paths.h"
#include "src/system/file_time.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vell::files {

using params::NativePath;

enum class Permission : std::int32_t { Read = 1, Write = 3 };
enum class SeekFrom : std::int32_t { Start = 1, End = 2, Current = 3 };

// An open file. Closed by close, whose error counts after writing, or by the destructor.
class File {
  public:
    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    virtual ~File() = default;

    // Length in bytes; 0 for a device that has none.
    virtual Result<std::uint64_t> size() = 0;
    // BeforeStart for a position below 0. Positions beyond the end are allowed.
    virtual Result<void> seek(SeekFrom from, std::int64_t offset) = 0;
    // Bytes read; fewer than asked for at the end of a file or as they come from a device, 0 at the
    // end.
    virtual Result<std::size_t> read(std::span<char> buffer) = 0;
    virtual Result<void> write(std::string_view bytes) = 0;
    // Cuts or extends the file at the current position.
    virtual Result<void> set_end_of_file() = 0;
    virtual Result<void> close() = 0;
    // When it was last written. NotSupported for what has no times.
    virtual Result<FileTime> modified() { return Failure{ErrorCode::NotSupported}; }
    // Where the file really stands; see FinalPaths. NotSupported for what has no path.
    virtual Result<std::u16string> final_path() { return Failure{ErrorCode::NotSupported}; }
};

// What stands at a path.
enum class ItemKind : std::uint8_t { None, File, Folder };

enum class Replace : std::uint8_t { No, Yes };

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Opens an existing file without sharing: Busy while anything else has it open, and for writing
    // one that is read-only. Never creates.
    virtual Result<std::unique_ptr<File>> open(const NativePath& path, Permission permission) = 0;
    // The next four let others have the file open at the same time, for reading and for writing.
    //
    // Opens for reading.
    virtual Result<std::unique_ptr<File>> open_shared(const NativePath& path) = 0;
    // Makes a file and opens it for writing, in one step. AlreadyExists when there is anything of
    // its name, a link without a target included.
    virtual Result<std::unique_ptr<File>> open_new(const NativePath& path) = 0;
    // Opens an existing file for writing and leaves its bytes. Busy as for the next one.
    virtual Result<std::unique_ptr<File>> open_to_write(const NativePath& path) = 0;
    // Opens for writing a file that is new or emptied. Busy for a folder and a read-only file.
    virtual Result<std::unique_ptr<File>> open_emptied(const NativePath& path) = 0;
    // Makes an empty file; AlreadyExists when there is anything of that name.
    virtual Result<void> create_new(const NativePath& path) = 0;

    // None for whatever keeps the system from telling.
    virtual ItemKind kind_of(const NativePath& path) = 0;
    // Whether both paths lead to one file that exists, however they are written.
    virtual bool is_same_file(const NativePath& a, const NativePath& b) = 0;
    // AlreadyExists when there is a target and it may not be replaced. The copy of a read-only file
    // is not read-only, so that it can be removed.
    virtual Result<void> copy(const NativePath& source, const NativePath& target,
                              Replace replace) = 0;
    // Gives a file another name on its volume, in one step: whatever looks at the target finds the
    // old file or the new one. AlreadyExists when there is a target and it may not be replaced.
    virtual Result<void> rename(const NativePath& source, const NativePath& target,
                                Replace replace) = 0;
    // Puts a file in the place of another, which is there, and under its name. What is not contents
    // stays that of the target as far as the volume can: permissions, attributes, the time of its
    // creation, further streams. A failure leaves the source, and mostly the target as well.
    virtual Result<void> replace(const NativePath& source, const NativePath& target) = 0;
    virtual Result<void> remove(const NativePath& path) = 0;
    // A name for a temporary file: "VELLTEMP{<UUID>}.tmp" in the system's temporary folder, with
    // another extension where one is given (at most 100 characters are taken). Nothing is made.
    virtual Result<NativePath> temporary_name(std::u16string_view extension) = 0;
    // Makes a file that nobody but this process' user may open, and opens it for writing; what the
    // system keeps encrypted on the disk for `like` is so for the new file as well. AlreadyExists
    // when there is anything of its name.
    virtual Result<std::unique_ptr<File>> open_private(const NativePath& path,
                                                       const NativePath& like) = 0;
    // A new temporary file for reading and writing, which is gone when it is closed, however the
    // program ends.
    virtual Result<std::unique_ptr<File>> open_temporary() = 0;
};

// A file that lives in memory, for reading and writing; it may be opened over given contents.
// Positions are 32-bit: a seek beyond 4 GiB - 1 fails with MemoryFileTooLarge.
std::unique_ptr<File> memory_file(std::string contents = {});

} // namespace vell::files
