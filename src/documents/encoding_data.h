// The encoding data by which texts in Chinese, Japanese and Korean fonts are read. It travels
// inside the plug-in as an archive and is unpacked when it is first needed.
#pragma once

#include "src/system/system.h"

#include <string_view>

namespace vell::documents {

// Unpacks what is not in the folder yet, or not with the length and checksum that the archive tells;
// the folder and the one above it are made where they are missing. Each file gets its name when it is complete, so that another
// process may do the same at the same time, or read already.
Result<void> unpack_missing(System& system, std::string_view archive,
                            const files::NativePath& folder);

} // namespace vell::documents
