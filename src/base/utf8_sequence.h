// One UTF-8 sequence at a time: what validation and conversion share.
#pragma once

#include <cstdint>

namespace vell {

struct Utf8Sequence {
    char32_t scalar; // U+FFFD when the sequence is ill-formed
    unsigned length; // bytes taken; of an ill-formed sequence, those of its maximal subpart
    bool valid;
};

// Bytes that a sequence with this lead byte has; 0 when no sequence begins with it.
constexpr unsigned utf8_length(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// The sequence at `at`, which is not `end`.
inline Utf8Sequence read_utf8(const unsigned char* at, const unsigned char* end) {
    constexpr char32_t replacement = 0xFFFD;
    const unsigned lead = at[0];
    const unsigned length = utf8_length(at[0]);
    if (length == 0)
        return {replacement, 1, false};
    if (length == 1)
        return {lead, 1, true};
    // The range of the second byte keeps out overlong forms, surrogates and what lies beyond
    // U+10FFFF.
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t scalar = lead & (0x7Fu >> length);
    for (unsigned i = 1; i < length; ++i) {
        if (at + i == end || at[i] < low || at[i] > high)
            return {replacement, i, false};
        scalar = scalar << 6 | (at[i] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {scalar, length, true};
}

} // namespace vell
