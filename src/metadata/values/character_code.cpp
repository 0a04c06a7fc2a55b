#include "src/metadata/values/character_code.h"

#include "src/base/ascii.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"
#include "src/formats/tiff/exif.h"

#include <algorithm>
#include <bitset>

namespace vell::metadata {
namespace {

namespace character_code = formats::tiff::character_code;

constexpr char16_t byte_order_mark = 0xFEFF;

std::u16string units_of(std::string_view bytes, ByteOrder order) {
    std::u16string units;
    for (std::size_t at = 0; const auto unit = load<std::uint16_t>(bytes, at, order); at += 2) {
        if (*unit == 0)
            break;
        units += static_cast<char16_t>(*unit);
    }
    return units;
}

struct Plausibility {
    std::size_t no_text = 0; // units that stand in no text
    std::size_t blocks = 0;  // of 256 characters each, that have some of the text

    friend auto operator<=>(const Plausibility&, const Plausibility&) = default;
};

constexpr bool is_no_text(char16_t unit) {
    const bool is_control = unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r';
    const bool is_private = unit >= 0xE000 && unit < 0xF900;
    return is_control || is_private || (unit >= 0x7F && unit < 0xA0) || unit >= 0xFFF0;
}

Plausibility plausibility_of(std::u16string_view units) {
    Plausibility result;
    std::bitset<256> blocks;
    for (std::size_t i = 0; i < units.size(); ++i) {
        blocks.set(static_cast<unsigned>(units[i]) >> 8);
        if (is_high_surrogate(units[i]) && i + 1 < units.size() && is_low_surrogate(units[i + 1]))
            ++i;
        else
            result.no_text += is_no_text(units[i]) || is_surrogate(units[i]);
    }
    result.blocks = blocks.count();
    return result;
}

std::string_view without_filling(std::string_view bytes) {
    return bytes.substr(0, bytes.find_last_not_of(std::string_view("\0 ", 2)) + 1);
}

// A text that somebody stored in bytes although it calls itself UTF-16. Few texts of Chinese
// characters have all their bytes among those of ASCII.
bool is_ascii_after_all(std::string_view bytes) {
    constexpr std::size_t enough = 12;
    return (bytes.size() % 2 != 0 || bytes.size() >= enough) && is_ascii(bytes) &&
           looks_like_text(bytes);
}

// JIS X 0208 in Shift JIS, which the host can read.
void append_shift_jis(std::string& bytes, unsigned char first, unsigned char second) {
    unsigned lead = (first - 0x21u) / 2 + 0x81;
    if (lead > 0x9F)
        lead += 0x40;
    const unsigned trail =
        first % 2 != 0 ? second + 0x1Fu + (second >= 0x60 ? 1 : 0) : second + 0x7Eu;
    bytes += static_cast<char>(lead);
    bytes += static_cast<char>(trail);
}

// The code of two bytes for a character, with the escape sequences of ISO 2022 where there are any.
// Bytes above 127 stand in no such text: it is Shift JIS then.
FoundText jis_text(std::string_view text) {
    if (!is_ascii(text))
        return {std::string(text), TextEncoding::ShiftJisWin};
    constexpr char escape = '\x1B';
    const bool switches = text.find(escape) != std::string_view::npos;
    bool is_wide = !switches;
    std::string bytes;
    while (!text.empty()) {
        if (text[0] == escape && text.size() >= 3) {
            is_wide = text[1] == '$';
            text.remove_prefix(3);
        } else if (is_wide && text.size() >= 2 && text[0] > ' ' && text[1] > ' ') {
            append_shift_jis(bytes, static_cast<unsigned char>(text[0]),
                             static_cast<unsigned char>(text[1]));
            text.remove_prefix(2);
        } else {
            bytes += text[0];
            text.remove_prefix(1);
        }
    }
    return {std::move(bytes), TextEncoding::ShiftJisWin};
}

} // namespace

FoundText recognised(std::string_view bytes, TextEncoding otherwise) {
    if (is_valid_utf8(bytes))
        return {std::string(bytes), TextEncoding::Utf8};
    return {std::string(bytes), otherwise == TextEncoding::Utf8 ? TextEncoding::Native : otherwise};
}

FoundText utf16_text(std::string_view bytes, ByteOrder expected) {
    const ByteOrder other = expected == ByteOrder::Little ? ByteOrder::Big : ByteOrder::Little;
    std::u16string units = units_of(bytes, expected);
    std::u16string swapped = units_of(bytes, other);
    const bool is_marked = units.starts_with(byte_order_mark);
    if (swapped.starts_with(byte_order_mark) ||
        (!is_marked && plausibility_of(swapped) < plausibility_of(units)))
        units = std::move(swapped);
    if (units.starts_with(byte_order_mark))
        units.erase(0, 1);
    return {utf8_from_utf16(units), TextEncoding::Utf8};
}

std::optional<FoundText> coded_text(std::string_view value, ByteOrder expected,
                                    TextEncoding otherwise) {
    const std::string_view code = value.substr(0, character_code::size);
    const std::string_view text = value.substr(std::min(character_code::size, value.size()));
    const std::string_view trimmed = without_filling(text);
    if (without_filling(value).empty())
        return FoundText{};
    if (code == character_code::unicode && !is_ascii_after_all(trimmed)) {
        FoundText found = utf16_text(text, expected);
        found.bytes.resize(without_filling(found.bytes).size());
        return found;
    }
    if (code == character_code::jis)
        return jis_text(trimmed);
    if (code == character_code::ascii || code == character_code::unicode ||
        (code == character_code::none && looks_like_text(trimmed)))
        return recognised(trimmed.substr(0, trimmed.find('\0')), otherwise);
    return std::nullopt;
}

bool looks_like_text(std::string_view bytes) {
    return std::ranges::none_of(bytes, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
    });
}

} // namespace vell::metadata
