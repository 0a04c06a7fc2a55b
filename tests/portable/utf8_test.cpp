// UTF-8 against a decoder that works by value.
#include "src/base/utf8.h"
#include "src/base/utf8_stream.h"
#include "tests/portable/references.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace vell {
namespace {

std::string hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

// The sequence between ASCII of 0 to 17 characters and of several lengths: in every place of a
// word, across the border of two, and in the rest behind the last.
bool validity_agrees_everywhere(std::string_view sequence, bool expected) {
    for (std::size_t before = 0; before <= 17; ++before)
        for (const std::size_t after : {0, 1, 2, 9}) {
            std::string bytes(before, 'a');
            bytes += sequence;
            bytes.append(after, 'z');
            if (is_valid_utf8(bytes) != expected)
                return false;
        }
    return true;
}

TEST(PluginUtf8, EverySequenceOfOneAndTwoBytes) {
    for (int first = 0; first < 256; ++first)
        for (int second = -1; second < 256; ++second) {
            std::string bytes(1, static_cast<char>(first));
            if (second >= 0)
                bytes += static_cast<char>(second);
            const auto expected = reference::decode_utf8(bytes);
            ASSERT_TRUE(validity_agrees_everywhere(bytes, expected.valid)) << hex(bytes);
            ASSERT_EQ(utf16_from_utf8(bytes), expected.text) << hex(bytes);
        }
}

// Every choice of up to four bytes from those at which a rule begins or ends.
TEST(PluginUtf8, LongerSequencesOfTheBytesThatMatter) {
    constexpr unsigned char choices[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                         0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED,
                                         0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
    constexpr std::size_t count = std::size(choices);
    for (std::size_t choice = 0; choice < count * count * count * count; ++choice) {
        std::string bytes;
        for (std::size_t rest = choice; bytes.size() < 4; rest /= count)
            bytes += static_cast<char>(choices[rest % count]);
        const auto expected = reference::decode_utf8(bytes);
        const std::size_t before = choice % 17;
        const std::string ascii(before, 'a');
        ASSERT_EQ(is_valid_utf8(ascii + bytes), expected.valid) << hex(bytes);
        ASSERT_EQ(is_valid_utf8(ascii + bytes + "zz"), expected.valid) << hex(bytes);
        ASSERT_EQ(utf16_from_utf8(ascii + bytes + ascii),
                  std::u16string(before, u'a') + expected.text + std::u16string(before, u'a'))
            << hex(bytes);

        std::size_t cut = 0; // a last sequence that the end of the bytes leaves unfinished
        for (std::size_t length = 1; length <= 3; ++length)
            if (reference::is_utf8_beginning(std::string_view(bytes).substr(4 - length)))
                cut = length;
        ASSERT_EQ(cut_sequence_at_end(bytes), cut) << hex(bytes);
    }
}

TEST(PluginUtf8, EveryScalarValueGoesBothWays) {
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        if (scalar >= 0xD800 && scalar <= 0xDFFF)
            continue;
        std::u16string text(1, static_cast<char16_t>(scalar));
        if (scalar > 0xFFFF)
            text = {static_cast<char16_t>(0xD800 + (scalar - 0x10000) / 0x400),
                    static_cast<char16_t>(0xDC00 + (scalar - 0x10000) % 0x400)};
        const std::string bytes = utf8_from_utf16(text);
        ASSERT_EQ(reference::utf8_scalar(bytes), scalar) << hex(bytes);
        ASSERT_EQ(utf16_from_utf8(bytes), text) << hex(bytes);
    }
}

TEST(PluginUtf8, SurrogatesWithoutAPartnerAreReplaced) {
    const std::string lost = "\xEF\xBF\xBD";
    const std::string grin = "\xF0\x9F\x98\x80";
    const auto units = [](std::initializer_list<int> list) {
        return std::u16string(list.begin(), list.end());
    };
    EXPECT_EQ(utf8_from_utf16(units({0xD83D})), lost);
    EXPECT_EQ(utf8_from_utf16(units({0xDE00, 'a'})), lost + "a");
    EXPECT_EQ(utf8_from_utf16(units({0xD83D, 0xD83D, 0xDE00})), lost + grin);
    EXPECT_EQ(utf8_from_utf16(units({0xD83D, 0xDE00, 0xDE00})), grin + lost);
    EXPECT_EQ(utf8_from_utf16(units({0xDBFF, 0xE000, 0xDBFF, 0xDBFF})),
              lost + "\xEE\x80\x80" + lost + lost);
}

TEST(PluginUtf8, ACutCharacterIsSeenFromBothSides) {
    const std::string characters[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    for (const std::string& cut : characters)
        for (const std::string& beside : characters)
            for (std::size_t before = 0; before < cut.size(); ++before) {
                const std::size_t behind = before == 0 ? 0 : cut.size() - before;
                EXPECT_EQ(cut_sequence_at_start(cut.substr(before) + beside), behind) << hex(cut);
                EXPECT_EQ(cut_sequence_at_end(beside + cut.substr(0, before)), before) << hex(cut);
            }
    // Nothing that a character could have left behind.
    EXPECT_EQ(cut_sequence_at_start("\x80\x80\x80\x80"), 0U);
    EXPECT_EQ(cut_sequence_at_start("\x80\x80\x80"), 3U);
}

TEST(PluginUtf8, StopsAtTheLastWholeCharacter) {
    const std::u16string text = u"0123456789abcdef\u20AC\U0001F600";
    const std::string whole = utf8_from_utf16(text);
    const std::size_t ends[] = {16, 19, 23};
    for (std::size_t capacity = 0; capacity <= whole.size(); ++capacity) {
        std::size_t expected = capacity < 16 ? capacity : 0;
        for (const std::size_t end : ends)
            expected = capacity >= end ? end : expected;
        std::string bytes(capacity + 1, '#');
        ASSERT_EQ(encode_utf8(text, bytes.data(), capacity), expected);
        EXPECT_EQ(bytes.substr(0, expected), whole.substr(0, expected));
        EXPECT_EQ(bytes.back(), '#');
    }
}

std::u16string decoded_in_pieces(std::string_view bytes, std::size_t first, std::size_t second) {
    Utf8Stream stream;
    stream.append(bytes.substr(0, first));
    stream.append(bytes.substr(first, second - first));
    stream.append(bytes.substr(second));
    return stream.finish();
}

TEST(Utf8Stream, DecodesTheSameHoweverItIsCut) {
    const struct {
        std::string bytes;
        std::u16string text;
    } cases[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF.",
         u"a\u00E9\u20AC\U0001F600\U0010FFFF."},
        {"\xFF", u"<INVALID UTF8>"},
        {"a\xFF\xFE\xC3(\x80z", u"a<INVALID UTF8>(<INVALID UTF8>z"},
        {"\xE2\x82\xC3\xA9", u"<INVALID UTF8>\u00E9"},
        {"\xED\xA0\x80|\xC0\x80|\xF4\x90\x80\x80|", u"<INVALID UTF8>|<INVALID UTF8>|<INVALID "
                                                    u"UTF8>|"},
        {"cut \xF0\x9F\x98", u"cut <INVALID UTF8>"},
        {"\xF0\x9F\x98\xF0\x9F", u"<INVALID UTF8>"},
    };
    for (const auto& [bytes, text] : cases)
        for (std::size_t first = 0; first <= bytes.size(); ++first)
            for (std::size_t second = first; second <= bytes.size(); ++second)
                EXPECT_EQ(decoded_in_pieces(bytes, first, second), text)
                    << bytes << ' ' << first << ' ' << second;
}

} // namespace
} // namespace vell
