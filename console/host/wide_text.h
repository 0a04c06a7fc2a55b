// UTF-8, and the wide strings of Windows.
#pragma once

#include "src/base/utf8.h"
#include "src/windows/text.h"

#include <string>
#include <string_view>

namespace vell::console {

inline std::string narrow(std::wstring_view text) {
    return utf8_from_utf16(to_utf16(text));
}
inline std::wstring widen(std::string_view utf8) {
    return to_wide(utf16_from_utf8(utf8));
}

} // namespace vell::console
