// The frame of functions that write a changed copy of a file, to a new file or in its own place.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <functional>
#include <optional>

namespace vell::files {

struct RewrittenFile {
    NativePath source;
    std::optional<NativePath> destination; // nullopt: the source's own place
};

// The two paths of a call, by index. An empty destination, or one that is the same text as the
// source, means the source's own place; any other is one at which Windows can make a file.
Result<RewrittenFile> rewritten_file(params::Call& call, FileSystem& files,
                                     std::size_t source_index, std::size_t destination_index);

// Reads one file from its start and writes the other, which is empty.
using RewritingWork = std::function<Result<void>(File& from, File& to)>;

// Lets `work` write the destination.
//
// In place, the work reads a temporary copy, which is removed only after success. Whatever fails
// once there is a copy leaves it, and a line of the debug log says which it is; the file itself is
// untouched up to the moment in which the work writes, and ends where that has stopped. A new
// destination must not exist (AlreadyExists), and is removed when the work fails.
Result<void> rewrite(params::Call& call, FileSystem& files, const RewrittenFile& file,
                     const RewritingWork& work);

} // namespace vell::files
