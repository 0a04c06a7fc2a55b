// Letter folding that touches A to Z only, whatever the character set.
#pragma once

#include <algorithm>
#include <string_view>

namespace vell {

template <typename Char>
constexpr Char fold_ascii(Char c) {
    return c >= Char('A') && c <= Char('Z') ? static_cast<Char>(c + ('a' - 'A')) : c;
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
