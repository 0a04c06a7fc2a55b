#include "console/model/unicode.h"

#include <algorithm>
#include <cstdint>

namespace vell::console {

namespace {

// Capital letters and the way to their small ones. With step 2 capitals and small letters
// alternate.
struct CaseRange {
    char16_t first;
    char16_t last;
    std::int16_t distance;
    std::uint8_t step;
};

constexpr CaseRange case_ranges[] = {
    {0x0041, 0x005A, 32, 1}, {0x00C0, 0x00D6, 32, 1},   {0x00D8, 0x00DE, 32, 1},
    {0x0100, 0x012E, 1, 2},  {0x0132, 0x0136, 1, 2},    {0x0139, 0x0147, 1, 2},
    {0x014A, 0x0176, 1, 2},  {0x0178, 0x0178, -121, 1}, {0x0179, 0x017D, 1, 2},
    {0x01CD, 0x01DB, 1, 2},  {0x01DE, 0x01EE, 1, 2},    {0x01F8, 0x021E, 1, 2},
    {0x0222, 0x0232, 1, 2},  {0x0386, 0x0386, 38, 1},   {0x0388, 0x038A, 37, 1},
    {0x038C, 0x038C, 64, 1}, {0x038E, 0x038F, 63, 1},   {0x0391, 0x03A1, 32, 1},
    {0x03A3, 0x03AB, 32, 1}, {0x0400, 0x040F, 80, 1},   {0x0410, 0x042F, 32, 1},
    {0x0460, 0x0480, 1, 2},  {0x048A, 0x04BE, 1, 2},    {0x04C1, 0x04CD, 1, 2},
    {0x04D0, 0x052E, 1, 2},  {0x0531, 0x0556, 48, 1},   {0x1E00, 0x1E94, 1, 2},
    {0x1EA0, 0x1EFE, 1, 2},  {0x2160, 0x216F, 16, 1},   {0x24B6, 0x24CF, 26, 1},
    {0xFF21, 0xFF3A, 32, 1},
};

// Ideographs, Hangul and surrogates, which are most of what is not in the table.
constexpr bool is_caseless(char16_t unit) {
    return unit >= 0x2E80 && unit < 0xFF00;
}

} // namespace

std::string json_string(std::u16string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string out = "\"";
    std::size_t copied = 0; // units before this one are in the result
    auto flush = [&](std::size_t end) {
        out += utf8_from_utf16(text.substr(copied, end - copied));
        copied = end + 1;
    };
    auto escape = [&](char16_t unit) {
        out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            out += digits[(unit >> shift) & 0xF];
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        const bool pair =
            is_high_surrogate(unit) && i + 1 < text.size() && is_low_surrogate(text[i + 1]);
        if (pair) {
            ++i;
        } else if (unit == u'"' || unit == u'\\') {
            flush(i);
            (out += '\\') += static_cast<char>(unit);
        } else if (unit == u'\r' || unit == u'\n' || unit == u'\t') {
            flush(i);
            out += unit == u'\r' ? "\\r" : unit == u'\n' ? "\\n" : "\\t";
        } else if (unit < 0x20 || unit == 0x7F || (unit >= 0xD800 && unit <= 0xDFFF)) {
            flush(i);
            escape(unit);
        }
    }
    flush(text.size());
    return out + '"';
}

std::string json_string(std::string_view utf8) {
    return json_string(utf16_from_utf8(utf8));
}

char16_t lower_case(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    if (is_caseless(unit))
        return unit;
    for (const CaseRange& range : case_ranges) {
        if (unit >= range.first && unit <= range.last && (unit - range.first) % range.step == 0)
            return static_cast<char16_t>(unit + range.distance);
    }
    return unit;
}

char16_t upper_case(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    if (is_caseless(unit))
        return unit;
    for (const CaseRange& range : case_ranges) {
        const int capital = unit - range.distance;
        if (capital >= range.first && capital <= range.last &&
            (capital - range.first) % range.step == 0)
            return static_cast<char16_t>(capital);
    }
    return unit;
}

std::u16string upper_case(std::u16string_view text) {
    std::u16string out(text);
    for (char16_t& unit : out)
        unit = upper_case(unit);
    return out;
}

std::u16string lower_case(std::u16string_view text) {
    std::u16string out(text);
    for (char16_t& unit : out)
        unit = lower_case(unit);
    return out;
}

std::strong_ordering compare_ignoring_case(std::u16string_view a, std::u16string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] == b[i])
            continue;
        if (const auto order = lower_case(a[i]) <=> lower_case(b[i]); order != 0)
            return order;
    }
    return a.size() <=> b.size();
}

} // namespace vell::console
