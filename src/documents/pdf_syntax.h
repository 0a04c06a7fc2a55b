// The smallest parts of PDF syntax (ISO 32000-1, 7.2), in a block of bytes.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace vell::documents {

constexpr bool is_pdf_white(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == '\0';
}
// Ends a name, a number or a keyword.
constexpr bool is_pdf_delimiter(char c) {
    return is_pdf_white(c) || std::string_view("()<>[]{}/%").find(c) != std::string_view::npos;
}
constexpr bool is_pdf_digit(char c) {
    return c >= '0' && c <= '9';
}

constexpr void skip_pdf_white(std::string_view& bytes) {
    while (!bytes.empty() && is_pdf_white(bytes.front()))
        bytes.remove_prefix(1);
}

// Takes decimal digits off the front, with white space before them. nullopt when there are none or
// when they say more than 64 bits hold.
constexpr std::optional<std::uint64_t> take_pdf_number(std::string_view& bytes) {
    skip_pdf_white(bytes);
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t number = 0;
    bool any = false;
    for (; !bytes.empty() && is_pdf_digit(bytes.front()); bytes.remove_prefix(1)) {
        const auto digit = static_cast<std::uint64_t>(bytes.front() - '0');
        if (number > (most - digit) / 10)
            return std::nullopt;
        number = number * 10 + digit;
        any = true;
    }
    return any ? std::optional(number) : std::nullopt;
}

// What follows the first occurrence of a key such as "/Info", which no longer key counts as;
// nullopt when there is none.
constexpr std::optional<std::string_view> after_pdf_key(std::string_view bytes,
                                                        std::string_view key) {
    for (std::size_t at = 0; (at = bytes.find(key, at)) != std::string_view::npos;) {
        at += key.size();
        if (at == bytes.size() || is_pdf_delimiter(bytes[at]))
            return bytes.substr(at);
    }
    return std::nullopt;
}

} // namespace vell::documents
