// What a JPEG XL codestream begins with (ISO/IEC 18181-1, annex D), and where it stands in boxes
// (ISO/IEC 18181-2, section 9).
#pragma once

#include "src/formats/window.h"

#include <cstdint>

namespace vell::formats::jpeg_xl {

struct ImageHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned bits_per_sample = 8; // of a channel
};

// Of a codestream alone or in boxes. Absent for a file that is none, CutOff for one that ends
// before.
Read<ImageHeader> read_image_header(const Window& file);

} // namespace vell::formats::jpeg_xl
