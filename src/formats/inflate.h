// Expands compressed data (RFC 1950) of unknown length within a limit.
#pragma once

#include "src/formats/damage.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vell::formats {

// Corrupt for a stream that does not expand or is cut off, TooLarge for one that gives more than
// `limit` bytes, Unreadable when there is no memory for it.
Read<std::string> inflate_within(std::string_view compressed, std::size_t limit);

} // namespace vell::formats
