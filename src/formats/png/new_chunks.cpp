#include "src/formats/png/new_chunks.h"

#include "src/base/bytes.h"
#include "src/base/crc32.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace vell::formats::png {
namespace {

constexpr std::size_t digits_of_a_line = 72;

// Takes the next line that is not empty off the text.
std::string_view take_line(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    return line;
}

std::optional<unsigned> digit(char c) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(&c, &c + 1, value, 16);
    return error == std::errc() && end == &c + 1 ? std::optional(value) : std::nullopt;
}

// With data in two parts, which may be long: they are copied once.
std::string chunk_of(std::string_view type, std::string_view start, std::string_view rest) {
    const std::size_t size = start.size() + rest.size();
    std::string bytes;
    bytes.reserve(type.size() + size + 2 * sizeof(std::uint32_t));
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(size), ByteOrder::Big);
    bytes += type;
    bytes += start;
    bytes += rest;
    const std::string_view checked = std::string_view(bytes).substr(sizeof(std::uint32_t));
    append_integer<std::uint32_t>(bytes, crc32_of(checked), ByteOrder::Big);
    return bytes;
}

} // namespace

std::string new_chunk(std::string_view type, std::string_view data) {
    return chunk_of(type, {}, data);
}

std::string new_text_chunk(std::string_view keyword, std::string_view text) {
    return chunk_of("tEXt", std::string(keyword) + '\0', text);
}

std::string new_international_text_chunk(std::string_view keyword, std::string_view text) {
    // No compression and its method, no language, no translated keyword.
    return chunk_of("iTXt", std::string(keyword) + std::string(5, '\0'), text);
}

std::string raw_profile_text(std::string_view name, std::string_view profile) {
    constexpr std::string_view hexadecimal = "0123456789abcdef";
    constexpr std::size_t length_width = 8;
    const std::string length = std::to_string(profile.size());
    std::string text = "\n" + std::string(name) + "\n";
    text.append(length_width - std::min(length.size(), length_width), ' ');
    text += length;
    for (std::size_t at = 0; at < profile.size(); ++at) {
        if (at * 2 % digits_of_a_line == 0)
            text += '\n';
        const auto byte = static_cast<unsigned char>(profile[at]);
        text += hexadecimal[byte / 16];
        text += hexadecimal[byte % 16];
    }
    return text + "\n";
}

std::optional<std::string> read_raw_profile(std::string_view text) {
    take_line(text); // the name, which the keyword has as well
    const std::string_view length_line = take_line(text);
    std::size_t length = 0;
    const auto [end, error] =
        std::from_chars(length_line.data(), length_line.data() + length_line.size(), length);
    if (error != std::errc() || end != length_line.data() + length_line.size())
        return std::nullopt;
    std::string profile;
    std::optional<unsigned> high;
    for (const char c : text) {
        const auto value = digit(c);
        if (!value && c != '\n' && c != ' ' && c != '\r')
            return std::nullopt;
        if (!value)
            continue;
        if (high)
            profile += static_cast<char>(*high * 16 + *value);
        high = high ? std::nullopt : value;
    }
    if (high || profile.size() != length)
        return std::nullopt;
    return profile;
}

} // namespace vell::formats::png
