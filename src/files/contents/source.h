// What a function reads: the file at a path, or a container that is given in its place.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vell::files {

enum class Sharing : std::uint8_t {
    Exclusive, // Busy while anything else has the file open
    Shared,
};

struct Source {
    std::unique_ptr<File> file;     // for reading
    std::u16string name;            // without folders; empty for a container without a name
    std::optional<NativePath> path; // none for a container
};

// A parameter as a source. A container is read where it lies.
Result<Source> open_source(params::Call& call, std::size_t index, FileSystem& files,
                           Sharing sharing);

// A file for reading over bytes.
std::unique_ptr<File> file_over(std::unique_ptr<ByteSource> bytes);

} // namespace vell::files
