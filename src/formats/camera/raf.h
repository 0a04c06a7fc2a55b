// What raw photographs of Fujifilm begin with: where the JPEG picture in them is.
#pragma once

#include "src/formats/record.h"

#include <cstdint>
#include <tuple>

namespace vell::formats::raf {

struct Header {
    static constexpr std::size_t size = 92;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t jpeg_offset = 0;
    std::uint32_t jpeg_length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{84, &Header::jpeg_offset}, Field{88, &Header::jpeg_length}};
    }
};

// What follows the picture's place: that of a list of values of the sensor's image.
struct ListPlace {
    static constexpr std::uint64_t start = 92;
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t offset = 0;
    std::uint32_t length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ListPlace::offset}, Field{4, &ListPlace::length}};
    }
};

// The list has a number of values, then each with this before it.
struct ValueHeader {
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint16_t tag = 0;
    std::uint16_t value_size = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ValueHeader::tag}, Field{2, &ValueHeader::value_size}};
    }
};

// The value of the image without its borders.
struct CroppedSize {
    static constexpr std::uint16_t tag = 0x0111;
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint16_t height = 0;
    std::uint16_t width = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &CroppedSize::height}, Field{2, &CroppedSize::width}};
    }
};

} // namespace vell::formats::raf
