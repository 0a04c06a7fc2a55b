// The sections of Sigma's raw photographs (X3F File Format Definition 2.2), as far as they hold
// pictures for the screen.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <tuple>
#include <vector>

namespace vell::formats::x3f {

struct Header {
    static constexpr std::size_t size = 40;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint32_t signature = 0x62564F46; // "FOVb"

    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t rotation = 0; // degrees, clockwise

    static constexpr auto fields() {
        return std::tuple{Field{28, &Header::columns}, Field{32, &Header::rows},
                          Field{36, &Header::rotation}};
    }
};

// What sections of images begin with.
struct ImageHeader {
    static constexpr std::size_t size = 28;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint32_t signature = 0x69434553; // "SECi"
    static constexpr std::uint32_t for_preview = 2;
    static constexpr std::uint32_t jpeg = 18;

    std::uint32_t type = 0;
    std::uint32_t format = 0;
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;

    static constexpr auto fields() {
        return std::tuple{Field{8, &ImageHeader::type}, Field{12, &ImageHeader::format},
                          Field{16, &ImageHeader::columns}, Field{20, &ImageHeader::rows}};
    }
};

inline constexpr std::uint32_t most_sections = 256;

struct Image {
    ImageHeader header;
    Window data;
};

// Those that the directory at the end of the file lists.
Read<std::vector<Image>> read_images(const Window& file);

} // namespace vell::formats::x3f
