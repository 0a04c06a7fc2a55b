// wchar_t and char16_t are the same UTF-16 units on Windows.
#pragma once

#include "console/model/utf8.h"

#include <string>
#include <string_view>

namespace vell::console {

inline std::u16string to_units(std::wstring_view text) {
    return {text.begin(), text.end()};
}
inline std::wstring to_wide(std::u16string_view text) {
    return {text.begin(), text.end()};
}
inline std::string narrow(std::wstring_view text) {
    return to_utf8(to_units(text));
}
inline std::wstring widen(std::string_view utf8) {
    return to_wide(to_utf16(utf8));
}

} // namespace vell::console
