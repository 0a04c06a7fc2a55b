// The checksum of PNG chunks and of archives (ITU-T V.42).
#pragma once

#include <cstdint>
#include <string_view>

namespace vell {

// Of the bytes behind others whose checksum is `before`.
std::uint32_t crc32_of(std::string_view bytes, std::uint32_t before = 0);

} // namespace vell
