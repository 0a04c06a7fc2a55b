// Wide strings of Windows and the UTF-16 strings of the portable code. Windows only.
#pragma once

#include <string>
#include <string_view>

namespace vell {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* as_wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline std::wstring to_wide(std::u16string_view text) {
    return {text.begin(), text.end()};
}
inline std::u16string to_utf16(std::wstring_view text) {
    return {text.begin(), text.end()};
}

} // namespace vell
