// The headers of JPEG, PNG, GIF and BMP files.
#pragma once

#include "src/formats/window.h"
#include "src/metadata/images/image_header.h"

namespace vell::metadata {

// Each reads a file whose first bytes are those of its format. EndOfFile when it ends in its
// header.

// The frame header (ITU-T T.81, B.2.2), with the resolution from the JFIF segment or from Exif.
// WrongImageKind without a frame, SegmentTooShort.
Result<ImageHeader> read_jpeg_header(formats::Window file);
// IHDR, pHYs, and acTL, which counts an animation's frames (PNG, third edition). WrongImageKind
// without IHDR.
Result<ImageHeader> read_png_header(formats::Window file);
// The logical screen descriptor (GIF89a, 18); images are counted up to the end of the file.
Result<ImageHeader> read_gif_header(formats::Window file);
// BITMAPINFOHEADER and those that begin like it, or BITMAPCOREHEADER. WrongImageKind for others.
Result<ImageHeader> read_bmp_header(formats::Window file);
} // namespace vell::metadata
