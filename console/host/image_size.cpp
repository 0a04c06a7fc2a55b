#include "console/host/image_size.h"

#include <cstdlib>
#include <initializer_list>

namespace vell::console {

namespace {

using Bytes = std::span<const std::byte>;

bool starts_with(Bytes bytes, std::string_view text) {
    if (bytes.size() < text.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (std::to_integer<unsigned char>(bytes[i]) != static_cast<unsigned char>(text[i]))
            return false;
    }
    return true;
}

// The caller has checked that the bytes are there.
std::int32_t big_endian(Bytes bytes, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[offset + i]);
    return static_cast<std::int32_t>(value);
}

std::int32_t little_endian(Bytes bytes, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = width; i > 0; --i)
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[offset + i - 1]);
    return static_cast<std::int32_t>(value);
}

// A frame header holds the size; of the markers C0 to CF three mean something else.
bool is_frame_header(std::int32_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<ImageSize> jpeg_size(Bytes bytes) {
    std::size_t position = 2;
    while (position + 9 <= bytes.size() && big_endian(bytes, position, 1) == 0xFF) {
        const std::int32_t marker = big_endian(bytes, position + 1, 1);
        if (is_frame_header(marker))
            return ImageSize{"JPEG", big_endian(bytes, position + 7, 2),
                             big_endian(bytes, position + 5, 2)};
        const bool fill = marker == 0xFF;
        position += fill ? 1 : 2 + static_cast<std::size_t>(big_endian(bytes, position + 2, 2));
    }
    return std::nullopt;
}

} // namespace

std::optional<ImageSize> image_size(Bytes bytes) {
    if (starts_with(bytes, "\x89PNG\r\n\x1A\n") && bytes.size() >= 24)
        return ImageSize{"PNGf", big_endian(bytes, 16, 4), big_endian(bytes, 20, 4)};
    if (starts_with(bytes, "GIF8") && bytes.size() >= 10)
        return ImageSize{"GIFf", little_endian(bytes, 6, 2), little_endian(bytes, 8, 2)};
    if (starts_with(bytes, "BM") && bytes.size() >= 26)
        return ImageSize{"BMPf", little_endian(bytes, 18, 4),
                         std::abs(little_endian(bytes, 22, 4))};
    if (starts_with(bytes, "\xFF\xD8\xFF"))
        return jpeg_size(bytes);
    return std::nullopt;
}

} // namespace vell::console
