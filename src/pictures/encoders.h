// Small pictures as files.
#pragma once

#include "src/system/pictures.h"

#include <cstdint>
#include <string>

namespace vell::pictures {

struct Rgb {
    std::uint8_t red = 255;
    std::uint8_t green = 255;
    std::uint8_t blue = 255;
};

// Lays a picture on a colour; it has no alpha then.
void flatten(Picture& picture, Rgb background);

// A JPEG file (JFIF 1.02) of a picture without alpha; quality is 1 to 100.
std::string encode_jpeg(const Picture& picture, int quality);

// A PNG file whose colours are said to be sRGB.
std::string encode_png(const Picture& picture);

} // namespace vell::pictures
