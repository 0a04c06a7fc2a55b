// Texts of the stand-in FMWrapper.dll: encodings, editing, styles.
#include "tests/windows/standin_fixture.h"

namespace vell::test {
namespace {

// Encodings ---------------------------------------------------------------------------------------

struct Sample {
    std::int32_t encoding;
    std::string bytes;
    std::u16string units;
};

TEST_F(StandInText, EveryEncodingIsTheRightOne) {
    const Sample samples[] = {
        {0, "\xE4\x80", u"\u00E4\u20AC"}, // Wine's own code page is 1252
        {1, "\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600"},
        {2, "\x80\xE1", u"\u00C7\u00DF"},
        {3, "\x80", u"\u20AC"},
        {4, "\x80", u"\u00C4"},
        {5, "\xE9\x80", u"\u00E9\u0080"},
        {6, "\x93\xFA\x96\x7B", u"\u65E5\u672C"},
        {7, "\x93\xFA\x96\x7B\xB1", u"\u65E5\u672C\uFF71"},
        {8, "\xC7\xD1", u"\uD55C"},
        {9, "\xC7\xD1\x81\x41", u"\uD55C\uAC02"},
        {10, "\xD0\x65", u"\uD55C"},
        {11, "\xA4\xA4", u"\u4E2D"},
        {12, "\xA4\xA4", u"\u4E2D"},
        {13, "\xD6\xD0", u"\u4E2D"},
        {14, "\xD6\xD0\x81\x40", u"\u4E2D\u4E02"},
        {15, "\x80", u"\u0410"},
        {16, "\xC0", u"\u0410"},
        {17, "\xB0", u"\u0410"},
        {18, "\x81", u"\u0100"},
        {19, "\xA5", u"\u0104"},
        {20, "\xA1", u"\u0104"},
        {21, "\xDA", u"\u011E"},
        {22, "\xD0\x80", u"\u011E\u20AC"},
        {23, "\xA1", u"\u0126"},
        {24, "\xD0\x80", u"\u011E\u0080"},
        {25, "\xC0", u"\u0104"},
        {26, "\xA2", u"\u0138"},
        {27, "\xB0", u"\u0660"},
        {28, "\x81", u"\u067E"},
        {29, "\xAC\xC7", u"\u060C\u0627"},
        {30, "\xB0", u"\u0391"},
        {31, "\xA2", u"\u0386"},
        {32, "\xB6", u"\u0386"},
        {33, "\xA6", u"\u20AA"},
        {34, "\xA4", u"\u20AA"},
        {35, "\xDF", u"\u2017"},
        {36, "\xA4", u"\u20AC"},
    };
    std::int32_t expected_encoding = 0;
    for (const Sample& sample : samples) {
        ASSERT_EQ(sample.encoding, expected_encoding++);
        assign(subject, "a" + sample.bytes, sample.encoding);
        EXPECT_EQ(units(subject), u"a" + sample.units) << sample.encoding;
        EXPECT_EQ(bytes(subject, sample.encoding), "a" + sample.bytes) << sample.encoding;
    }
    EXPECT_EQ(expected_encoding, 37);
}

TEST_F(StandInText, SingleBytesComeBack) {
    for (std::int32_t encoding = 0; encoding <= 36; ++encoding) {
        if (encoding == utf8 || (encoding >= 6 && encoding <= 14))
            continue;
        int undefined = 0;
        for (int value = 1; value < 256; ++value) {
            const std::string byte(1, static_cast<char>(value));
            assign(subject, byte, encoding);
            ASSERT_EQ(units(subject).size(), 1u);
            if (value < 0x80) {
                EXPECT_EQ(units(subject)[0], value) << encoding;
            }
            const std::string back = bytes(subject, encoding);
            if (back != byte) {
                // Undefined, or a second byte for a character that a lower one already is.
                ++undefined;
                EXPECT_GE(value, 0x80) << encoding;
                const std::u16string before = units(subject);
                assign(subject, back, encoding);
                EXPECT_TRUE(before == u"\uFFFD" || before == units(subject)) << encoding;
            }
        }
        // In the two bidirectional Mac encodings most signs and digits exist twice.
        EXPECT_LE(undefined, encoding == 27 || encoding == 33 ? 80 : 45) << encoding;
    }
    assign(subject, std::string("a\0b", 3), 3);
    EXPECT_EQ(units(subject), std::u16string(u"a\0b", 3));
}

TEST_F(StandInText, LongTextsAreConvertedPieceByPiece) {
    for (const std::int32_t encoding : {7, 9, 12, 14, 10, 1, 3}) {
        assign(subject, encoding == 3 ? "x" : "\xC3\xA4", encoding == 3 ? 3 : utf8);
        if (encoding >= 6 && encoding <= 14)
            FM_Text_AssignUnicode(subject, encoding == 9 || encoding == 10 ? u"\uD55C" : u"\u4E2D",
                                  &status);
        const std::string character = bytes(subject, encoding);
        const std::u16string wide = units(subject);
        // The odd byte in front puts the pieces' ends inside of two-byte characters.
        std::string long_bytes = "a";
        std::u16string long_units = u"a";
        for (int i = 0; i < 1'200'000; ++i) {
            long_bytes += character;
            long_units += wide;
        }
        assign(subject, long_bytes, encoding);
        EXPECT_TRUE(units(subject) == long_units) << encoding;
        EXPECT_TRUE(bytes(subject, encoding, static_cast<std::uint32_t>(long_bytes.size() + 1)) ==
                    long_bytes)
            << encoding;
    }
}

TEST_F(StandInText, UnknownEncodingsFailAndChangeNothing) {
    FM_Text_AssignUnicode(subject, u"kept", &status);
    for (const std::int32_t encoding : {-1, 37, 4200}) {
        assign(subject, "other", encoding);
        EXPECT_EQ(taken_code(), 2);
        EXPECT_EQ(bytes(subject, encoding), "");
        EXPECT_EQ(taken_code(), 2);
    }
    EXPECT_EQ(units(subject), u"kept");
}

TEST_F(StandInText, BytesFitTheirBuffer) {
    FM_Text_AssignUnicode(subject, u"a\u65E5\u672Cb", &status);
    const char* by_utf8[] = {"", "a", "a", "a", "a\xE6\x97\xA5"};
    const char* by_shift_jis[] = {"", "a", "a", "a\x93\xFA", "a\x93\xFA"};
    for (std::uint32_t size = 1; size <= 5; ++size) {
        EXPECT_EQ(bytes(subject, utf8, size), by_utf8[size - 1]);
        EXPECT_EQ(bytes(subject, 7, size), by_shift_jis[size - 1]);
    }
    char buffer[8] = "1234567";
    FM_Text_GetBytes(subject, buffer, sizeof buffer, 1, 1, 7, &status);
    EXPECT_STREQ(buffer, "\x93\xFA");
    FM_Text_GetBytes(subject, buffer, sizeof buffer, 9, to_end, 7, &status);
    EXPECT_STREQ(buffer, "");
}

TEST_F(StandInText, MissingCharactersBecomeQuestionMarks) {
    // A long A is not written as an A without its stroke.
    FM_Text_AssignUnicode(subject, u"\u0100\u20ACa\U0001F600b\xD83D", &status);
    EXPECT_EQ(bytes(subject, 5), "??a?b?");
    EXPECT_EQ(bytes(subject, 3), "?\x80"
                                 "a?b?");
    FM_Text_AssignUnicode(subject, u"\u00E4\u65E5", &status);
    EXPECT_EQ(bytes(subject, 7), "?\x93\xFA");
}

// Text --------------------------------------------------------------------------------------------

TEST_F(StandInText, PartsAreClampedToTheText) {
    FM_Text_AssignUnicode(subject, u"0123456789", &status);
    FM_Text_SetText(other, subject, 8, 100, &status);
    EXPECT_EQ(units(other), u"89");
    FM_Text_AppendText(other, subject, 0, 2, &status);
    FM_Text_InsertText(other, other, 2, &status);
    EXPECT_EQ(units(other), u"89890101");
    FM_Text_AppendText(other, other, 6, to_end, &status);
    FM_Text_InsertText(other, subject, 100, &status);
    EXPECT_EQ(units(other), u"89890101010123456789");
    FM_Text_DeleteText(other, 2, 14, &status);
    FM_Text_DeleteText(other, 5, to_end, &status);
    FM_Text_DeleteText(other, 50, 1, &status);
    EXPECT_EQ(units(other), u"89678");
    FM_Text_SetText(other, other, 1, 2, &status);
    EXPECT_EQ(units(other), u"96");
}

TEST_F(StandInText, LongTextsChangeOnTheirOwn) {
    const std::u16string content(100'000, u'.');
    FM_Text_AssignUnicode(subject, content.c_str(), &status);
    fm::Data* data = FM_Data_Constructor1(&status);
    FM_Data_SetAsText(data, subject, FM_Data_GetLocale(data, &status), 1, &status);
    const fm::Text* kept = FM_Data_GetAsText(data, &status);
    FM_Text_AssignUnicode(other, u"end", &status);
    FM_Text_AppendText(subject, other, 0, to_end, &status);
    EXPECT_TRUE(units(subject) == content + u"end");
    FM_Text_AppendText(subject, subject, 0, to_end, &status);
    EXPECT_TRUE(units(subject) == content + u"end" + content + u"end");
    FM_Text_DeleteText(subject, 3, to_end, &status);
    FM_Text_InsertText(subject, other, 0, &status);
    EXPECT_EQ(units(subject), u"end...");
    EXPECT_TRUE(units(kept) == content);
    FM_Data_Delete(data, &status);
}

TEST_F(StandInText, SearchesFromAPosition) {
    FM_Text_AssignUnicode(subject, u"\u00C4pfel, \u00E4pfel, \u0416\u0436", &status);
    const auto find = [&](const char16_t* wanted, std::uint32_t position) {
        FM_Text_AssignUnicode(other, wanted, &status);
        return std::pair(FM_Text_Find(subject, other, position, &status),
                         FM_Text_FindIgnoringCase(subject, other, position, &status));
    };
    using Found = std::pair<std::uint32_t, std::uint32_t>;
    constexpr std::uint32_t none = fm::not_found;
    EXPECT_EQ(find(u"\u00E4PF", 0), Found(none, 0));
    EXPECT_EQ(find(u"\u00E4pf", 0), Found(7, 0));
    EXPECT_EQ(find(u"\u00E4pf", 1), Found(7, 7));
    EXPECT_EQ(find(u"\u0436\u0436", 0), Found(none, 14));
    EXPECT_EQ(find(u"", 0), Found(none, none));
    EXPECT_EQ(find(u"l", 100), Found(none, none));
}

TEST_F(StandInStyles, RunsFollowTheText) {
    FM_Text_AssignUnicode(subject, u"0123456789", &status);
    set(subject, fm::face_bold, 2, 4);
    set(subject, fm::face_italic, 5, to_end);
    EXPECT_EQ(faces(subject), "..bbbiiiii");

    FM_Text_AssignUnicode(other, u"xyz", &status);
    FM_Text_InsertText(subject, other, 3, &status);
    EXPECT_EQ(faces(subject), "..b...bbiiiii");
    FM_Text_DeleteText(subject, 1, 6, &status);
    EXPECT_EQ(faces(subject), ".biiiii");
    FM_Text_AppendText(subject, subject, 0, 3, &status);
    EXPECT_EQ(faces(subject), ".biiiii.bi");
    FM_Text_AppendText(other, subject, 1, 2, &status);
    FM_Text_AppendText(other, other, 0, 1, &status);
    EXPECT_EQ(faces(other), "...bi.");
    FM_Text_InsertText(other, subject, 0, &status);
    EXPECT_EQ(faces(other), ".biiiii.bi...bi.");
    FM_Text_SetText(other, subject, 5, 4, &status);
    EXPECT_EQ(faces(other), "ii.b");

    FM_Text_DeleteText(subject, 0, to_end, &status);
    FM_Text_AppendText(subject, other, 3, 1, &status);
    EXPECT_EQ(faces(subject), "b");
    FM_Text_AssignUnicode(subject, u"new", &status);
    EXPECT_EQ(faces(subject), "...");
}

TEST_F(StandInStyles, ColoursAreTraitsOfTheirOwn) {
    EXPECT_FALSE(FM_CharacterStyle_IsColorEnabled(style, &status));
    fm::Color* red = FM_Color_Constructor2(200, 1, 2, 255, &status);
    FM_CharacterStyle_SetColor(style, red, &status);
    FM_Color_Delete(red, &status);
    FM_Text_AssignUnicode(subject, u"ab", &status);
    FM_Text_SetStyle(subject, style, 1, 1, &status);

    FM_Text_GetStyle(subject, style, 0, &status);
    EXPECT_FALSE(FM_CharacterStyle_IsColorEnabled(style, &status));
    FM_Text_GetStyle(subject, style, 1, &status);
    EXPECT_TRUE(FM_CharacterStyle_IsColorEnabled(style, &status));
    const fm::Color* color = FM_CharacterStyle_GetColor(style, &status);
    EXPECT_EQ(FM_Color_GetRed(color, &status), 200);
    EXPECT_EQ(FM_Color_GetGreen(color, &status), 1);
    EXPECT_EQ(FM_Color_GetBlue(color, &status), 2);
    EXPECT_EQ(FM_Color_GetAlpha(color, &status), 255);
}

} // namespace
} // namespace vell::test
