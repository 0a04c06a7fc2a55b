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
    const auto found = std::search(text.begin(), text.end(), wanted.begin(), wanted.end(),
                                   [](char a, char b) { return fold_ascii(a) == fold_ascii(b); });
    if (found == text.end() && !wanted.empty())
        return std::string_view::npos;
    return static_cast<std::size_t>(found - text.begin());
}

} // namespace vell
