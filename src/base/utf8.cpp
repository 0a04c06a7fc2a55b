#include "src/base/utf8.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace vell {
namespace {

// Length and bounds of the sequence that a lead byte starts. The second byte's bounds carry the
// rules against overlong forms, surrogates and values above U+10FFFF.
struct LeadByte {
    std::uint8_t length; // 0: not a lead byte
    std::uint8_t second_low;
    std::uint8_t second_high;
};

constexpr LeadByte lead_byte(unsigned char byte) {
    if (byte < 0x80)
        return {1, 0, 0};
    if (byte < 0xC2)
        return {0, 0, 0};
    if (byte < 0xE0)
        return {2, 0x80, 0xBF};
    if (byte == 0xE0)
        return {3, 0xA0, 0xBF};
    if (byte == 0xED)
        return {3, 0x80, 0x9F};
    if (byte < 0xF0)
        return {3, 0x80, 0xBF};
    if (byte == 0xF0)
        return {4, 0x90, 0xBF};
    if (byte < 0xF4)
        return {4, 0x80, 0xBF};
    if (byte == 0xF4)
        return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

constexpr bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

struct Sequence {
    std::size_t length; // bytes taken, at least 1
    bool valid;
    char32_t scalar;
};

// The sequence at `position`; when it is ill-formed, its length is that of the maximal subpart.
Sequence sequence_at(const unsigned char* data, std::size_t size, std::size_t position) {
    const unsigned char first = data[position];
    const LeadByte lead = lead_byte(first);
    if (lead.length == 1)
        return {1, true, first};
    if (lead.length == 0)
        return {1, false, 0};
    if (position + 1 >= size || data[position + 1] < lead.second_low ||
        data[position + 1] > lead.second_high)
        return {1, false, 0};
    char32_t scalar = first & (0x7Fu >> lead.length);
    scalar = scalar << 6 | (data[position + 1] & 0x3F);
    for (std::size_t i = 2; i < lead.length; ++i) {
        if (position + i >= size || !is_continuation(data[position + i]))
            return {i, false, 0};
        scalar = scalar << 6 | (data[position + i] & 0x3F);
    }
    return {lead.length, true, scalar};
}

// Length of the run of ASCII that begins at `position`, read a word at a time. Words are
// little-endian: the first byte is the lowest.
std::size_t ascii_run(const unsigned char* data, std::size_t size, std::size_t position) {
    const std::size_t start = position;
    for (; position + sizeof(std::uint64_t) <= size; position += sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, data + position, sizeof word);
        if (const std::uint64_t high_bits = word & 0x8080808080808080u; high_bits != 0)
            return position - start + static_cast<std::size_t>(std::countr_zero(high_bits)) / 8;
    }
    while (position < size && data[position] < 0x80)
        ++position;
    return position - start;
}

// Length of a well-formed sequence of two or three bytes that needs no further check than the shape
// of its bytes; 0 when the long way has to decide.
std::size_t plain_sequence(const unsigned char* bytes) {
    if (bytes[0] >= 0xC2 && bytes[0] < 0xE0)
        return is_continuation(bytes[1]) ? 2 : 0;
    const bool three = bytes[0] > 0xE0 && bytes[0] < 0xF0 && bytes[0] != 0xED;
    return three && is_continuation(bytes[1]) && is_continuation(bytes[2]) ? 3 : 0;
}

} // namespace

bool is_valid_utf8(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t size = bytes.size();
    std::size_t position = 0;
    for (;;) {
        position += ascii_run(data, size, position);
        if (position == size)
            return true;
        do {
            std::size_t length = position + 3 <= size ? plain_sequence(data + position) : 0;
            if (length == 0) {
                const Sequence sequence = sequence_at(data, size, position);
                if (!sequence.valid)
                    return false;
                length = sequence.length;
            }
            position += length;
        } while (position < size && data[position] >= 0x80);
    }
}

std::size_t cut_sequence_at_start(std::string_view bytes) {
    std::size_t length = 0;
    while (length < bytes.size() && is_continuation(static_cast<unsigned char>(bytes[length])))
        ++length;
    return length <= 3 ? length : 0; // more continue nothing
}

std::size_t cut_sequence_at_end(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (std::size_t length = 1; length <= 3 && length <= bytes.size(); ++length) {
        const std::size_t position = bytes.size() - length;
        if (is_continuation(data[position]))
            continue;
        const Sequence sequence = sequence_at(data, bytes.size(), position);
        const bool reaches_end = sequence.length == length;
        return !sequence.valid && reaches_end && lead_byte(data[position]).length > length ? length
                                                                                           : 0;
    }
    return 0;
}

std::u16string utf16_from_utf8(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::u16string text;
    text.reserve(bytes.size());
    for (std::size_t position = 0; position < bytes.size();) {
        const Sequence sequence = sequence_at(data, bytes.size(), position);
        position += sequence.length;
        if (!sequence.valid) {
            text += replacement_character;
        } else if (sequence.scalar < 0x10000) {
            text += static_cast<char16_t>(sequence.scalar);
        } else {
            text += static_cast<char16_t>(0xD7C0 + (sequence.scalar >> 10));
            text += static_cast<char16_t>(0xDC00 + (sequence.scalar & 0x3FF));
        }
    }
    return text;
}

std::string utf8_from_utf16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t scalar = text[i];
        if (scalar >= 0xD800 && scalar < 0xE000) {
            const bool pair = scalar < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                              text[i + 1] < 0xE000;
            scalar = pair ? 0x10000 + ((scalar - 0xD800) << 10) + (text[++i] - 0xDC00u)
                          : static_cast<char32_t>(replacement_character);
        }
        if (scalar < 0x80) {
            bytes += static_cast<char>(scalar);
            continue;
        }
        const int continuation_bytes = scalar < 0x800 ? 1 : scalar < 0x10000 ? 2 : 3;
        constexpr char32_t lead_marks[] = {0, 0xC0, 0xE0, 0xF0};
        bytes +=
            static_cast<char>(lead_marks[continuation_bytes] | scalar >> (6 * continuation_bytes));
        for (int shift = 6 * (continuation_bytes - 1); shift >= 0; shift -= 6)
            bytes += static_cast<char>(0x80 | (scalar >> shift & 0x3F));
    }
    return bytes;
}

} // namespace vell
