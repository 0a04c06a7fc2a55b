// The pictures of icon and cursor files. Windows only.
#pragma once

#include "src/pictures/decoding/icon_file.h"

namespace vell::windows {

// One of the pictures with alpha, by Windows where it is a PNG.
Result<pictures::Picture> decode_icon_image(ByteSource& bytes, const pictures::IconImage& image);

// The best of the pictures for a size that can be decoded (0: the largest). NotSupported for
// another kind of file.
Result<pictures::Picture> decode_icon(ByteSource& bytes, std::uint32_t size);

// Frame 0 is the largest picture, others are counted as they stand in the file.
Result<std::unique_ptr<pictures::PictureRows>> decode_icon_frame(ByteSource& bytes,
                                                                 std::uint32_t frame);

} // namespace vell::windows
