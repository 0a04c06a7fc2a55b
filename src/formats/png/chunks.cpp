#include "src/formats/png/chunks.h"

#include <algorithm>

namespace vell::formats::png {
namespace {

// Takes what stands before the first zero byte off the data, with that byte.
std::optional<std::string_view> take_to_zero(std::string_view& data) {
    const std::size_t zero = data.find('\0');
    if (zero == std::string_view::npos)
        return std::nullopt;
    const std::string_view taken = data.substr(0, zero);
    data.remove_prefix(zero + 1);
    return taken;
}

} // namespace

unsigned ImageHeader::channels() const {
    constexpr unsigned palette = 1, colour = 2, alpha = 4;
    const unsigned colours = (colour_type & colour) != 0 && (colour_type & palette) == 0 ? 3 : 1;
    return colours + ((colour_type & alpha) != 0 ? 1 : 0);
}

Read<std::optional<Chunk>> ChunkWalk::next() {
    const auto header = file_.read_record<ChunkHeader>();
    if (!header && header.error().damage == Damage::CutOff)
        return std::optional<Chunk>();
    if (!header)
        return Failure{header.error()};
    const std::uint64_t start = file_.position();
    const Chunk chunk{*header, start, file_.part(start, header->length)};
    file_.skip(std::uint64_t{header->length} + checksum_size);
    return std::optional(chunk);
}

std::optional<Text> Text::read(std::string_view data) {
    const auto keyword = take_to_zero(data);
    if (!keyword)
        return std::nullopt;
    return Text{*keyword, data};
}

std::string utf8_from_latin_1(std::string text) {
    const auto above_ascii = static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; }));
    if (above_ascii == 0)
        return text;
    std::string utf8;
    utf8.reserve(text.size() + above_ascii);
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
            continue;
        }
        utf8 += static_cast<char>(0xC0 | byte >> 6);
        utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
    return utf8;
}

Read<InternationalText> InternationalText::read(std::string_view data) {
    const auto keyword = take_to_zero(data);
    if (!keyword || data.size() < 2)
        return fault(Damage::CutOff);
    const bool is_compressed = data[0] != 0;
    const auto method = static_cast<std::uint8_t>(data[1]);
    data.remove_prefix(2);
    const auto language = take_to_zero(data);
    const auto translated = language ? take_to_zero(data) : std::nullopt;
    if (!translated)
        return fault(Damage::CutOff);
    return InternationalText{*keyword, is_compressed, method, *language, *translated, data};
}

} // namespace vell::formats::png
