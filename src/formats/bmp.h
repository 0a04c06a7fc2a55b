// The headers of a BMP file, behind BITMAPFILEHEADER: a size that tells which one it is, and then
// its fields, counted from behind that size.
#pragma once

#include "src/formats/record.h"

#include <cstdint>
#include <tuple>

namespace vell::formats::bmp {

inline constexpr std::uint64_t header_start = 14;

// Sizes of headers.
inline constexpr std::uint32_t core_header = 12;
inline constexpr std::uint32_t shortest_info_header = 16;
inline constexpr std::uint32_t info_header_with_resolution = 40;
inline constexpr std::uint32_t longest_info_header = 124;

// BITMAPCOREHEADER.
struct CoreHeader {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint16_t planes = 0;
    std::uint16_t bit_count = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &CoreHeader::width}, Field{2, &CoreHeader::height},
                          Field{4, &CoreHeader::planes}, Field{6, &CoreHeader::bit_count}};
    }
};

// What BITMAPINFOHEADER and those that grew from it begin with.
struct InfoHeader {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint32_t width = 0;
    std::int32_t height = 0; // negative where the rows stand from top to bottom
    std::uint16_t planes = 0;
    std::uint16_t bit_count = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &InfoHeader::width}, Field{4, &InfoHeader::height},
                          Field{8, &InfoHeader::planes}, Field{10, &InfoHeader::bit_count}};
    }
};

// What follows in those that have a resolution.
struct InfoHeaderRest {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint32_t compression = 0;
    std::uint32_t image_size = 0;
    std::int32_t horizontal_resolution = 0; // pixels of a metre
    std::int32_t vertical_resolution = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &InfoHeaderRest::compression},
                          Field{4, &InfoHeaderRest::image_size},
                          Field{8, &InfoHeaderRest::horizontal_resolution},
                          Field{12, &InfoHeaderRest::vertical_resolution}};
    }
};

} // namespace vell::formats::bmp
