// Colours of pictures: from whatever profile they follow to sRGB.
#pragma once

#include "src/system/pictures.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vell::pictures {

// A colour of CIE 1931 by its chromaticity.
struct Chromaticity {
    double x = 0;
    double y = 0;
};
struct Primaries {
    Chromaticity white, red, green, blue;
};
inline constexpr Primaries srgb_primaries{
    {0.3127, 0.3290}, {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}}; // IEC 61966-2-1, table 1

// An ICC profile of a display with that exponent; empty where it would be sRGB, or makes no sense.
std::string gamma_profile(ColourModel model, double exponent, const Primaries& primaries);

// Converts rows of 16 bits to sRGB of 8 bits.
class ToSrgb {
  public:
    // A profile of another colour model, and one that cannot be read, does not count: grey and RGB
    // are sRGB then, and inks the complements of light.
    ToSrgb(const PictureLayout& source, std::string_view profile);
    ToSrgb(const ToSrgb&) = delete;
    ToSrgb& operator=(const ToSrgb&) = delete;
    ~ToSrgb();

    // Pixels of three components, or with the alpha of the source of four.
    void convert(std::span<const std::uint16_t> row, std::span<std::uint8_t> pixels) const;

  private:
    struct Transform;

    PictureLayout source_;
    std::unique_ptr<Transform> transform_; // null where none is needed
};

} // namespace vell::pictures
