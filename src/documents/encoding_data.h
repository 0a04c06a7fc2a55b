// The encoding data by which texts in Chinese, Japanese and Korean fonts are read. It travels
// inside the plug-in as an archive and is unpacked when it is first needed.
#pragma once

#include "src/archive/archive_system.h"

#include <string>
#include <string_view>
#include <vector>

namespace vell::documents {

// Unpacks what is not in the folder yet, or not with its whole length; the folder and the one above
// it are made where they are missing. Each file gets its name when it is complete, so that another
// process may do the same at the same time, or read already.
Result<void> unpack_missing(archive::ArchiveSystem& system, std::string_view archive,
                            const files::NativePath& folder);

// The folder of the data, in UTF-8 and without a limit of length: in the user's local application
// data, or where nothing can be written there, in the temporary folder. When neither has all of it,
// a note says so.
std::string provide_encoding_data(std::vector<std::string>& notes);

} // namespace vell::documents
