// The headers of WebP, Photoshop and JPEG XL files.
#pragma once

#include "src/base/result.h"
#include "src/formats/window.h"
#include "src/metadata/images/image_header.h"

namespace vell::metadata {

// Each is NotSupported for a file whose size cannot be read.

// The canvas; the frames of an animation are its images. 24 bits, 32 with transparency.
Result<ImageHeader> read_webp_header(formats::Window file);
// All channels count for the depth. The resolution stands in an image resource.
Result<ImageHeader> read_photoshop_header(formats::Window file);
// The codestream as it is stored, whose orientation is left to who shows it. Three channels.
Result<ImageHeader> read_jpeg_xl_header(formats::Window file);

} // namespace vell::metadata
