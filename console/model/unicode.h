// Letter case without the C library's locales, so that every platform gives the same answers, and
// JSON strings.
#pragma once

#include "src/base/utf16.h"
#include "src/base/utf8.h"

#include <compare>
#include <string>
#include <string_view>

namespace vell::console {

// A double-quoted JSON string. Lone surrogates are kept as \uXXXX.
std::string json_string(std::u16string_view text);
std::string json_string(std::string_view utf8);

// One unit to one unit: Latin, Greek, Cyrillic, Armenian and full-width letters.
char16_t upper_case(char16_t unit);
char16_t lower_case(char16_t unit);
std::u16string upper_case(std::u16string_view text);
std::u16string lower_case(std::u16string_view text);

std::strong_ordering compare_ignoring_case(std::u16string_view a, std::u16string_view b);
inline bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && compare_ignoring_case(a, b) == 0;
}

} // namespace vell::console
