// The directory of a block of tags that describes an image.
#pragma once

#include "src/formats/window.h"
#include "src/metadata/images/image_header.h"

#include <string_view>

namespace vell::metadata {

// The first directory, or the one of full resolution where that describes a thumbnail (TIFF 6.0,
// section 8, NewSubfileType); each directory of its chain is an image. EndOfFile for a file that
// ends in its header, CorruptStructure for one without a size, or outside the file.
Result<ImageHeader> read_tiff_header(formats::Window file);

// The resolution in the first directory of a block of tags; the default where there is none.
Resolution resolution_of(std::string_view tags);

} // namespace vell::metadata
