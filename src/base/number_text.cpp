#include "src/base/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vell {
namespace {

template <typename Integer>
std::string integer_text(Integer value) {
    std::array<char, 24> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

} // namespace

std::string to_text(std::int64_t value) {
    return integer_text(value);
}
std::string to_text(std::uint64_t value) {
    return integer_text(value);
}

std::string to_text(double value, int digits) {
    // More digits than any number has, of which a long text keeps the first.
    std::array<char, 1000> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                   std::chars_format::general, std::min(digits, 800))
                         .ptr;
    return {buffer.data(), std::min(end, buffer.data() + 99)};
}

std::string hexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

} // namespace vell
