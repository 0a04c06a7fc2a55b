// BMP files as browsers show them.
#pragma once

#include "src/system/pictures.h"

namespace vell::pictures {

// NotSupported for what is no BMP file and for those with another file within, PictureTooLarge
// beyond 250 million pixels, and beyond 50 million of a compressed picture; the other codes are
// those of PictureSystem::decode. Alpha counts where a mask tells of it and a pixel has some; what
// a compressed picture passes over, and the rows that a file without its end lacks, are
// transparent.
Result<std::unique_ptr<PictureRows>> decode_bmp(ByteSource& bytes, std::uint32_t frame);

} // namespace vell::pictures
