// The headers of HEIF files, among them HEIC and AVIF (ISO/IEC 23008-12).
#pragma once

#include "src/base/result.h"
#include "src/formats/window.h"
#include "src/metadata/images/image_header.h"

namespace vell::metadata {

// Of the primary image, as it is shown: a turn by "irot" is part of its decoding, unlike an
// orientation in Exif. Images are counted without tiles, thumbnails and auxiliary ones.
// NotSupported for a file in boxes that has no primary image with a size, such as a movie.
Result<ImageHeader> read_heif_header(formats::Window file);

} // namespace vell::metadata
