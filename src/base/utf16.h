// UTF-16 as defined by Unicode, section 3.9: a character above U+FFFF is a high surrogate and a low
// one.
#pragma once

#include <cstddef>
#include <string_view>

namespace vell {

constexpr bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr bool is_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

constexpr char32_t character_of_pair(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Of a character above U+FFFF.
constexpr char16_t high_surrogate(char32_t character) {
    return static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
}
constexpr char16_t low_surrogate(char32_t character) {
    return static_cast<char16_t>(0xDC00 + (character & 0x3FF));
}

// At most so many units of a text, without the first half of a character at their end.
constexpr std::u16string_view beginning(std::u16string_view text, std::size_t length) {
    if (length < text.size() && length > 0 && is_high_surrogate(text[length - 1]))
        --length;
    return text.substr(0, length);
}

} // namespace vell
