// Frames of GIF files as they look when they are shown.
#pragma once

#include "src/system/pictures.h"

namespace vell::pictures {

// The screen with a frame and what the frames before it leave there; what nothing was drawn on is
// transparent. NotSupported for what is no GIF file, PictureTooLarge for a screen of more than 50
// million pixels and for more than 500 million that are to be drawn before; the other codes are
// those of PictureSystem::decode. Of a file that ends within the frame, the rows above are given.
Result<std::unique_ptr<PictureRows>> decode_gif(ByteSource& bytes, std::uint32_t frame);

} // namespace vell::pictures
