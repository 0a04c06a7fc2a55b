// Copies of files in the temporary folder, for work that replaces a file in its place.
#pragma once

#include "src/files/file_access.h"

namespace vell::files {

// A copy of `source`; the caller removes it. The extension replaces "tmp" where one is given.
Result<NativePath> make_temporary_copy(FileSystem& files, const NativePath& source,
                                       std::u16string_view extension = {});

} // namespace vell::files
