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

} // namespace vell::formats::raf
