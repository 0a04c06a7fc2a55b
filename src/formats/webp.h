// What the chunks of a WebP file say of its size (RFC 9649, sections 2.5 to 2.7; RFC 6386, section
// 9.1, for lossy frames).
#pragma once

#include "src/formats/riff.h"

#include <cstdint>

namespace vell::formats::webp {

struct Canvas {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool has_alpha = false;
    std::uint64_t frames = 1;
};

// Of the file's extended header, or of its only frame. Absent for a file that is none, CutOff or
// Corrupt where it has neither.
Read<Canvas> read_canvas(const Window& file);

} // namespace vell::formats::webp
