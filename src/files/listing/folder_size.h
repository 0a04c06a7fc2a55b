// The bytes of all files below a folder.
#pragma once

#include "src/system/folder_reader.h"

namespace vell::files {

// Counts each file's length, hidden ones too. Links and junctions count nothing and are not
// followed. A folder that cannot be read fails the whole with its code: a sum without it would be
// wrong.
Result<std::uint64_t> folder_size(FolderSource& source, const std::u16string& folder);

} // namespace vell::files
