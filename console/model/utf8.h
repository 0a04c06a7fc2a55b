// UTF-8 and UTF-16. Nothing is ever refused: each invalid sequence of bytes (the longest that could
// have begun a character) and each surrogate without its partner becomes U+FFFD.
//
// Sizes are counted first and filled afterwards, so that the caller allocates the result once and
// nothing else, however long the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vell::console {

std::size_t utf16_size(std::string_view utf8);
void decode_utf8(std::string_view utf8, char16_t* units); // room for utf16_size

std::size_t utf8_size(std::u16string_view units);
// Writes whole characters as long as they fit; returns the number of bytes.
std::size_t encode_utf8(std::u16string_view units, char* bytes, std::size_t capacity);

std::u16string to_utf16(std::string_view utf8);
std::string to_utf8(std::u16string_view units);

} // namespace vell::console
