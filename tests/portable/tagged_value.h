// Values of tagged texts that tests write, and what is looked for in what they read.
#pragma once

#include <string>
#include <string_view>

namespace vell::test {

inline bool has(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

// A value of a tagged text.
inline std::string section(const std::string& word, int number, const std::string& value) {
    const std::string digits = std::to_string(number);
    return "\r##" + word + " " + digits + "\r" + value + "\r##END " + digits;
}

} // namespace vell::test
