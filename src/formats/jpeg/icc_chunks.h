// The colour profile of a JPEG stream, which APP2 segments hold in chunks (ICC.1:2010, B.4).
#pragma once

#include "src/formats/jpeg/segments.h"

#include <cstdint>
#include <string>

namespace vell::formats::jpeg {

// The chunks joined in the order of their numbers. Absent when the stream has none, Corrupt when
// one is missing, twice there or of another count, TooLarge beyond `most` bytes.
Read<std::string> read_profile(const Window& stream, std::uint64_t most);

} // namespace vell::formats::jpeg
