// Slow and plain second answers, written from the rules alone, that tests and fuzzers compare with.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vell::reference {

// The scalar value that the whole of `sequence` encodes in UTF-8, decided by the value and the
// number of bytes that it takes.
inline std::optional<char32_t> utf8_scalar(std::string_view sequence) {
    if (sequence.empty() || sequence.size() > 4)
        return std::nullopt;
    const unsigned lead = static_cast<unsigned char>(sequence[0]);
    constexpr unsigned lead_masks[] = {0x80, 0xE0, 0xF0, 0xF8};
    constexpr unsigned lead_marks[] = {0x00, 0xC0, 0xE0, 0xF0};
    const std::size_t more = sequence.size() - 1;
    if ((lead & lead_masks[more]) != lead_marks[more])
        return std::nullopt;
    char32_t scalar = lead & ~lead_masks[more] & 0xFF;
    for (char byte : sequence.substr(1)) {
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80)
            return std::nullopt;
        scalar = scalar * 64 + (static_cast<unsigned char>(byte) & 0x3F);
    }
    constexpr char32_t first_of_length[] = {0, 0x80, 0x800, 0x10000};
    if (scalar < first_of_length[more] || scalar > 0x10FFFF ||
        (scalar >= 0xD800 && scalar <= 0xDFFF))
        return std::nullopt;
    return scalar;
}

// Whether some well-formed sequence begins with `bytes` and goes on after them. Of the bytes that
// follow, only the second makes a difference.
inline bool is_utf8_beginning(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > 3 || static_cast<unsigned char>(bytes[0]) < 0xC0)
        return false;
    std::string whole(bytes);
    const bool lead_alone = bytes.size() == 1;
    for (std::size_t length = bytes.size() + 1; length <= 4; ++length) {
        whole.resize(length, '\x80');
        for (int second = 0x80; second <= (lead_alone ? 0xBF : 0x80); ++second) {
            if (lead_alone)
                whole[1] = static_cast<char>(second);
            if (utf8_scalar(whole))
                return true;
        }
    }
    return false;
}

struct Utf8Decoded {
    std::u16string text; // U+FFFD for each maximal ill-formed subpart
    bool valid = true;
};

inline Utf8Decoded decode_utf8(std::string_view bytes) {
    Utf8Decoded result;
    while (!bytes.empty()) {
        std::optional<char32_t> scalar;
        std::size_t taken = 0;
        while (!scalar && taken < std::min<std::size_t>(4, bytes.size()))
            scalar = utf8_scalar(bytes.substr(0, ++taken));
        if (!scalar) {
            result.valid = false;
            scalar = 0xFFFD;
            for (taken = std::min<std::size_t>(3, bytes.size());
                 taken > 1 && !is_utf8_beginning(bytes.substr(0, taken)); --taken)
                continue;
        }
        bytes.remove_prefix(taken);
        if (*scalar < 0x10000) {
            result.text += static_cast<char16_t>(*scalar);
        } else {
            result.text += static_cast<char16_t>(0xD800 + (*scalar - 0x10000) / 0x400);
            result.text += static_cast<char16_t>(0xDC00 + (*scalar - 0x10000) % 0x400);
        }
    }
    return result;
}

// Line ends, one find and one insertion or deletion after the other.
template <typename Char>
void convert_line_endings(std::basic_string<Char>& text, int mode) {
    constexpr Char cr[] = {13, 0};
    constexpr Char lf[] = {10, 0};
    constexpr Char cr_lf[] = {13, 10, 0};
    constexpr std::size_t none = std::basic_string<Char>::npos;
    if (mode == 1)
        for (std::size_t at = text.find(cr); at != none; at = text.find(cr, at + 2))
            text.insert(at + 1, lf);
    if (mode == 2)
        for (std::size_t at = text.find(cr_lf); at != none; at = text.find(cr_lf, at + 1))
            text.erase(at + 1, 1);
    if (mode == 3)
        for (std::size_t at = text.find(lf); at != none; at = text.find(lf, at + 2))
            text.insert(at, cr);
    if (mode == 9 || mode == 10) {
        convert_line_endings(text, 2);
        convert_line_endings(text, 3);
    }
    if (mode == 10)
        convert_line_endings(text, 1);
}

// Every occurrence, leftmost first, none overlapping; A to Z and a to z are the same on request.
inline std::string substitute(std::string_view text, std::string_view search,
                              std::string_view replacement, bool ignore_case) {
    const auto folded = [&](char c) {
        return ignore_case && c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    };
    std::string result;
    while (!text.empty()) {
        std::size_t equal = 0;
        while (equal < std::min(search.size(), text.size()) &&
               folded(text[equal]) == folded(search[equal]))
            ++equal;
        const bool found = equal == search.size();
        result += found ? replacement : text.substr(0, 1);
        text.remove_prefix(found ? search.size() : 1);
    }
    return result;
}

} // namespace vell::reference
