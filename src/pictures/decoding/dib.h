// Device-independent bitmaps: what BMP files hold behind their file header, and icons have within.
#pragma once

#include "src/formats/window.h"
#include "src/pictures/decoding/pixel_format.h"

#include <cstdint>
#include <vector>

namespace vell::pictures {

enum class DibCompression : std::uint8_t { None, Rle8, Rle4, Rle24 };

struct DibHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool is_top_down = false;
    DibCompression compression = DibCompression::None;
    PixelFormat format = {};
    std::vector<Colour> palette = {};
    std::uint64_t end = 0; // of header, masks and palette, from the header's start

    // Of a row in the file, where it is not compressed.
    std::uint64_t stride() const { return (std::uint64_t{width} * format.bits + 31) / 32 * 4; }
};

enum class DibOf : std::uint8_t {
    File,
    Icon, // announces twice the height of its picture, and 32 bits have alpha
};

// The header that the window begins with; colours that lie at or behind `data`, from its start, are
// not in the palette, unless that is 0. NotSupported for what follows other rules, such as a JPEG
// within, PictureDamaged otherwise.
Result<DibHeader> read_dib_header(const formats::Window& dib, std::uint64_t data, DibOf of);

} // namespace vell::pictures
