// What an image file says of size, depth, resolution and number of images.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::metadata {

// Dots per inch.
struct Resolution {
    double horizontal;
    double vertical;
};

struct ImageHeader {
    static constexpr double default_resolution = 72; // dots per inch

    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t depth = 0; // bits of a pixel, those of all its channels
    double horizontal_resolution = default_resolution;
    double vertical_resolution = default_resolution;
    std::uint64_t image_count = 1;
    std::string_view codec_name = {}; // where its format has several
    std::string codec_type = {};

    void set_resolution(const Resolution& resolution) {
        horizontal_resolution = resolution.horizontal;
        vertical_resolution = resolution.vertical;
    }
};

inline constexpr double centimetres_per_inch = 2.54;

// The default for a resolution of 0.
inline Resolution per_inch(double horizontal, double vertical, double units_per_inch) {
    const auto convert = [&](double value) {
        return value > 0 ? value * units_per_inch : ImageHeader::default_resolution;
    };
    return {convert(horizontal), convert(vertical)};
}

} // namespace vell::metadata
