// UTF-8 as defined by RFC 3629 (no surrogates, no overlong forms, nothing above U+10FFFF).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vell {

// Replaces what cannot be represented.
inline constexpr char16_t replacement_character = u'\uFFFD';

// Whether all of `bytes` is well-formed; a sequence cut off at the end is not. Linear, with a fast
// path for runs of ASCII.
bool is_valid_utf8(std::string_view bytes);

// Bytes at the start (at most 3) that continue a sequence begun before them, and bytes at the end
// that begin a well-formed sequence which goes on after them; 0 when nothing is cut there.
std::size_t cut_sequence_at_start(std::string_view bytes);
std::size_t cut_sequence_at_end(std::string_view bytes);

// Conversions refuse nothing: ill-formed bytes become U+FFFD, one for each maximal subpart
// (Unicode, section 3.9), and so does each surrogate without its partner.
//
// Sizes can be counted first and filled afterwards, so that the caller allocates the result once
// and nothing else, however long the text.
std::size_t utf16_size(std::string_view bytes);
void decode_utf8(std::string_view bytes, char16_t* units); // room for utf16_size

std::size_t utf8_size(std::u16string_view units);
// Writes whole characters as long as they fit; returns the number of bytes.
std::size_t encode_utf8(std::u16string_view units, char* bytes, std::size_t capacity);

std::u16string utf16_from_utf8(std::string_view bytes);
std::string utf8_from_utf16(std::u16string_view units);

} // namespace vell
