// Integers as bytes of a file made for a test.
#pragma once

#include "src/base/bytes.h"

#include <string>

namespace vell::test {

inline std::string big16(std::uint16_t value) {
    std::string bytes;
    append_integer<std::uint16_t>(bytes, value, ByteOrder::Big);
    return bytes;
}
inline std::string big32(std::uint32_t value) {
    std::string bytes;
    append_integer<std::uint32_t>(bytes, value, ByteOrder::Big);
    return bytes;
}
inline std::string little32(std::uint32_t value) {
    std::string bytes;
    append_integer<std::uint32_t>(bytes, value, ByteOrder::Little);
    return bytes;
}

} // namespace vell::test
