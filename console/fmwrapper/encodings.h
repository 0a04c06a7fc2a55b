// The host's text encodings, numbers 0 to 36: UTF-8, the system's own code page, and Windows' code
// pages for the rest. Another number throws BadCall.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vell::console {

std::u16string decode(std::string_view bytes, std::int32_t encoding);

// Writes whole characters as long as they fit and returns the number of bytes; a character that the
// encoding lacks becomes "?".
std::size_t encode(std::u16string_view units, std::int32_t encoding, char* bytes,
                   std::size_t capacity);

} // namespace vell::console
