// Numbers as text, independent of the user's locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vell {

std::string to_text(std::int64_t value);
std::string to_text(std::uint64_t value);

// `value` with `digits` significant digits in the shorter of fixed and exponent form, as the "%g"
// conversion of printf gives it; at most 99 characters.
std::string to_text(double value, int digits);

// Two digits, 0 to 9 and A to F, for each byte.
std::string hexadecimal(std::string_view bytes);

} // namespace vell
