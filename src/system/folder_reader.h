// What a folder holds, as the system tells it: the seam below listings and folder sizes.
#pragma once

#include "src/base/result.h"
#include "src/system/file_time.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vell::files {

struct FolderEntry {
    std::u16string name;
    std::u16string short_name; // the 8.3 name; empty where there is none or the name is one already
    std::uint64_t size = 0;
    bool is_folder = false;
    bool is_hidden = false;
    bool is_link = false; // a symbolic link or a junction: what it leads to lies elsewhere
    bool is_read_only = false;
    FileTime created{};
    FileTime modified{};
    FileTime accessed{};
};

// What the system says of a failure.
struct SystemError {
    std::int32_t number = 0; // its own, which is positive
    ErrorCode code = ErrorCode::Ok;
};

// An enumeration under way. "." and ".." are among the entries where the system gives them.
class FolderReader {
  public:
    FolderReader() = default;
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;
    virtual ~FolderReader() = default;

    // Fills entries from the first on, in the order of the file system, and tells how many; 0 at
    // the end.
    virtual Result<std::size_t, SystemError> read(std::span<FolderEntry> entries) = 0;
};

class FolderSource {
  public:
    // How many entries are read at a time.
    static constexpr std::size_t batch_size = 25;

    virtual ~FolderSource() = default;

    // Begins to read a folder, whose path ends with a separator. A folder without any entry opens
    // as well.
    virtual Result<std::unique_ptr<FolderReader>, SystemError>
    open_folder(const std::u16string& path) = 0;
};

} // namespace vell::files
