#include "src/base/number_text.h"

#include <array>
#include <charconv>
#include <cstdio>

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
    std::array<char, 100> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, value);
    return buffer.data();
}

} // namespace vell
