// Width and height of an image, read from its first bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vell::console {

struct ImageSize {
    std::string_view stream_type; // "JPEG", "GIFf", "PNGf", "BMPf"
    std::int32_t width = 0;
    std::int32_t height = 0;
};

// nullopt for what is not a JPEG, GIF, PNG or BMP image.
std::optional<ImageSize> image_size(std::span<const std::byte> bytes);

} // namespace vell::console
