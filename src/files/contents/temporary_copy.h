// Temporary files: copies for work that replaces a file in its place, and new files that take their
// name when they are complete.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <functional>

namespace vell::files {

// A file that is being made: removed again, whatever ends the work, unless it is kept.
class UnfinishedFile {
  public:
    UnfinishedFile(FileSystem& files, const NativePath& path) : files_(files), path_(path) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile();
    void keep() { kept_ = true; }

  private:
    FileSystem& files_;
    const NativePath& path_;
    bool kept_ = false;
};

// A copy of the bytes of `source` that nobody but this process' user may open; the caller removes
// it. What fails leaves none. The extension replaces "tmp" where one is given.
Result<NativePath> make_temporary_copy(FileSystem& files, const NativePath& source,
                                       std::u16string_view extension = {});

// A name for a new file in the folder of `target`, of which nothing is made.
Result<NativePath> name_beside(FileSystem& files, const NativePath& target);

// Busy for a file that may not be written now.
Result<void> check_writable(FileSystem& files, const NativePath& path);

// Lets `write` fill a file that takes the target's place when it is complete: what fails leaves no
// file behind, and the old one where there is one. AlreadyExists for a target that may not be
// replaced, Busy while another call writes it. Should the system lose a target that it was to
// replace, the new file stays under its own name, which the debug log tells.
Result<void> write_whole_file(params::Call& call, FileSystem& files, const NativePath& target,
                              Replace replace, const std::function<Result<void>(File&)>& write);

} // namespace vell::files
