// Pictures by Windows' imaging component. Windows only.
#pragma once

#include "src/system/pictures.h"

namespace vell::windows {

// See PictureSystem::decode. PictureTooLarge beyond 250 million pixels and, except for TIFF, whose
// parts are read one by one, beyond 512 MB of pixels.
Result<std::unique_ptr<pictures::PictureRows>> decode_by_wic(ByteSource& bytes,
                                                             std::uint32_t frame);

} // namespace vell::windows
