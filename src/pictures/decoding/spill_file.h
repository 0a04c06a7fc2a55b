// A temporary file for what a decoder cannot keep in memory.
#pragma once

#include "src/pictures/decoding/decoding.h"
#include "src/system/file_access.h"

#include <memory>

namespace vell::pictures {

// Null where none can be made. The file is gone with its owner.
std::unique_ptr<SpillFile> new_spill_file(files::FileSystem& files);

} // namespace vell::pictures
