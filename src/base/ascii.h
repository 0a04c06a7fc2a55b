// What concerns the characters of ASCII only, whatever the character set.
#pragma once

#include <algorithm>
#include <string_view>
#include <type_traits>

namespace vell {

// Letters A to Z become small.
template <typename Char>
constexpr Char fold_ascii(Char c) {
    return c >= Char('A') && c <= Char('Z') ? static_cast<Char>(c + ('a' - 'A')) : c;
}

template <typename Char>
constexpr bool is_digit(Char c) {
    return c >= Char('0') && c <= Char('9');
}
template <typename Char>
constexpr bool is_letter(Char c) {
    return fold_ascii(c) >= Char('a') && fold_ascii(c) <= Char('z');
}

template <typename Char>
constexpr bool is_ascii(std::basic_string_view<Char> text) {
    return std::all_of(text.begin(), text.end(),
                       [](Char c) { return static_cast<std::make_unsigned_t<Char>>(c) < 0x80; });
}

// Letters A to Z compared without case, all else as it is.
template <typename Char>
constexpr bool equal_ignoring_case(std::basic_string_view<Char> a,
                                   std::type_identity_t<std::basic_string_view<Char>> b) {
    return std::ranges::equal(a, b, {}, fold_ascii<Char>, fold_ascii<Char>);
}
template <typename Char>
constexpr bool starts_ignoring_case(std::basic_string_view<Char> text,
                                    std::type_identity_t<std::basic_string_view<Char>> start) {
    return equal_ignoring_case(text.substr(0, start.size()), start);
}
template <typename Char>
constexpr bool ends_ignoring_case(std::basic_string_view<Char> text,
                                  std::type_identity_t<std::basic_string_view<Char>> end) {
    return text.size() >= end.size() &&
           equal_ignoring_case(text.substr(text.size() - end.size()), end);
}

// Position of the first occurrence of `wanted` in `text`, letters A to Z compared without case;
// npos when there is none.
constexpr std::size_t find_ignoring_case(std::string_view text, std::string_view wanted) {
    if (wanted.empty())
        return 0;
    // Mostly the letters agree in case too, and folding is not needed.
    const auto equal = [](char a, char b) {
        return a == b || fold_ascii(a) == fold_ascii(b);
    };
    const std::size_t last = wanted.size() - 1;
    for (std::size_t i = 0; i + last < text.size(); ++i) {
        // Switches tend to begin alike and to end differently.
        if (equal(text[i + last], wanted[last]) &&
            std::equal(wanted.begin(), wanted.end() - 1, text.begin() + i, equal))
            return i;
    }
    return std::string_view::npos;
}

} // namespace vell
