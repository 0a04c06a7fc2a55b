#include "src/base/utf8.h"

#include "src/base/utf16.h"
#include "src/base/utf8_sequence.h"

#include <cstdint>
#include <cstring>

namespace vell {

namespace {

constexpr std::size_t block = 16;

struct Character {
    char32_t code;
    unsigned length; // in bytes or units
};

bool is_ascii_block(const char* bytes) {
    std::uint64_t halves[2];
    static_assert(sizeof halves == block);
    std::memcpy(halves, bytes, block);
    return ((halves[0] | halves[1]) & 0x8080808080808080) == 0;
}

bool is_ascii_block(const char16_t* units) {
    std::uint64_t quarters[4];
    static_assert(sizeof quarters == block * sizeof(char16_t));
    std::memcpy(quarters, units, sizeof quarters);
    return ((quarters[0] | quarters[1] | quarters[2] | quarters[3]) & 0xFF80FF80FF80FF80) == 0;
}

Character read_utf16(const char16_t* at, const char16_t* end) {
    const char32_t unit = at[0];
    if (!is_surrogate(unit))
        return {unit, 1};
    if (is_high_surrogate(unit) && at + 1 != end && is_low_surrogate(at[1]))
        return {character_of_pair(unit, at[1]), 2};
    return {replacement_character, 1};
}

unsigned encoded_length(char32_t code) {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

// Calls `ascii(first, count)` for runs of ASCII and `other(character)` for the rest.
template <typename Ascii, typename Other>
void scan_utf8(std::string_view utf8, Ascii&& ascii, Other&& other) {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    while (at != end) {
        while (static_cast<std::size_t>(end - at) >= block && is_ascii_block(at)) {
            ascii(at, block);
            at += block;
        }
        // What follows a block is usually text with few ASCII characters in a row, so the block
        // test is not repeated at each of its characters.
        const char* const retry = static_cast<std::size_t>(end - at) > block ? at + block : end;
        while (at < retry) {
            if (static_cast<unsigned char>(*at) < 0x80) {
                ascii(at, std::size_t{1});
                ++at;
                continue;
            }
            const Utf8Sequence sequence = read_utf8(reinterpret_cast<const unsigned char*>(at),
                                                    reinterpret_cast<const unsigned char*>(end));
            other(sequence.scalar);
            at += sequence.length;
        }
    }
}

} // namespace

std::size_t utf16_size(std::string_view utf8) {
    std::size_t size = 0;
    scan_utf8(
        utf8, [&size](const char*, std::size_t count) { size += count; },
        [&size](char32_t code) { size += code >= 0x10000 ? 2 : 1; });
    return size;
}

void decode_utf8(std::string_view utf8, char16_t* units) {
    scan_utf8(
        utf8,
        [&units](const char* first, std::size_t count) {
            if (count == block) {
                for (std::size_t i = 0; i < block; ++i)
                    units[i] = static_cast<unsigned char>(first[i]);
            } else {
                *units = static_cast<unsigned char>(*first);
            }
            units += count;
        },
        [&units](char32_t code) {
            if (code >= 0x10000) {
                *units++ = high_surrogate(code);
                code = low_surrogate(code);
            }
            *units++ = static_cast<char16_t>(code);
        });
}

std::size_t utf8_size(std::u16string_view units) {
    std::size_t size = 0;
    const char16_t* at = units.data();
    const char16_t* const end = at + units.size();
    while (at != end) {
        if (static_cast<std::size_t>(end - at) >= block && is_ascii_block(at)) {
            size += block;
            at += block;
            continue;
        }
        const Character character = read_utf16(at, end);
        size += encoded_length(character.code);
        at += character.length;
    }
    return size;
}

std::size_t encode_utf8(std::u16string_view units, char* bytes, std::size_t capacity) {
    char* to = bytes;
    char* const limit = bytes + capacity;
    const char16_t* at = units.data();
    const char16_t* const end = at + units.size();
    while (at != end) {
        if (static_cast<std::size_t>(end - at) >= block &&
            static_cast<std::size_t>(limit - to) >= block && is_ascii_block(at)) {
            for (std::size_t i = 0; i < block; ++i)
                to[i] = static_cast<char>(at[i]);
            to += block;
            at += block;
            continue;
        }
        const Character character = read_utf16(at, end);
        const unsigned length = encoded_length(character.code);
        if (static_cast<std::size_t>(limit - to) < length)
            break;
        if (length == 1) {
            *to++ = static_cast<char>(character.code);
        } else {
            // The lead byte's upper bits: as many ones as there are bytes, then a zero.
            unsigned shift = 6 * (length - 1);
            *to++ = static_cast<char>((0xF00u >> length & 0xFF) | character.code >> shift);
            while (shift != 0) {
                shift -= 6;
                *to++ = static_cast<char>(0x80 | (character.code >> shift & 0x3F));
            }
        }
        at += character.length;
    }
    return static_cast<std::size_t>(to - bytes);
}

std::u16string utf16_from_utf8(std::string_view utf8) {
    std::u16string units(utf16_size(utf8), u'\0');
    decode_utf8(utf8, units.data());
    return units;
}

std::string utf8_from_utf16(std::u16string_view units) {
    std::string bytes(utf8_size(units), '\0');
    encode_utf8(units, bytes.data(), bytes.size());
    return bytes;
}

} // namespace vell
