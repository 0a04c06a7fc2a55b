// Icon files made for a test.
#pragma once

#include "tests/portable/integers.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace vell::test {

inline std::string little16(std::uint16_t value) {
    std::string bytes;
    append_integer<std::uint16_t>(bytes, value, ByteOrder::Little);
    return bytes;
}

// BITMAPINFOHEADER with twice the height, palette, and rows with the mask.
inline std::string icon_bitmap(std::uint32_t width, std::uint32_t height, std::uint16_t bits,
                               const std::string& palette, const std::string& rows) {
    return little32(40) + little32(width) + little32(height * 2) + little16(1) + little16(bits) +
           std::string(24, '\0') + palette + rows;
}

// Rows of up to 32 pixels, each of which begins with that byte.
inline std::string icon_mask(std::initializer_list<int> rows) {
    std::string mask;
    for (const int row : rows)
        mask += static_cast<char>(row) + std::string(3, '\0');
    return mask;
}

inline std::string icon_file(const std::vector<std::string>& pictures) {
    std::string file =
        little16(0) + little16(1) + little16(static_cast<std::uint16_t>(pictures.size()));
    std::size_t offset = 6 + 16 * pictures.size();
    for (const std::string& picture : pictures) {
        file += std::string(8, '\0') + little32(static_cast<std::uint32_t>(picture.size())) +
                little32(static_cast<std::uint32_t>(offset));
        offset += picture.size();
    }
    for (const std::string& picture : pictures)
        file += picture;
    return file;
}

} // namespace vell::test
