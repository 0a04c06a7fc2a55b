// Switches, their values and the encodings that they choose.
#include "src/base/utf8.h"
#include "src/params/encodings.h"
#include "src/params/switches.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vell::params {
namespace {

struct EncodingRow {
    std::string name;
    int number;
};

// Names by their numbers in the host's interface, in the order in which they are looked for.
std::vector<EncodingRow> encoding_rows() {
    const auto cells = testing::cells(
        u"Native|0|UTF8|1|UTF-8|1|ASCII_DOS|2|ASCII_Windows|3|ASCII_Mac|4|ISO_8859_15|36|"
        u"ISO_8859_1|5|ShiftJIS_Mac|6|ShiftJIS_Win|7|Korean_Mac|8|Korean_Win|9|"
        u"Korean_Johab|10|ChineseTrad_Mac|11|ChineseTrad_Win|12|ChineseSimp_Mac|13|"
        u"ChineseSimp_Win|14|Cyrillic_Mac|15|Cyrillic_Win|16|ISO_8859_5|17|"
        u"CentralEurope_Mac|18|EasternEurope_Win|19|ISO_8859_2|20|Turkish_Mac|21|"
        u"Turkish_Win|22|ISO_8859_3|23|ISO_8859_9|24|Baltic_Win|25|ISO_8859_4|26|"
        u"Arabic_Mac|27|Arabic_Win|28|ISO_8859_6|29|Greek_Mac|30|Greek_Win|31|"
        u"ISO_8859_7|32|Hebrew_Mac|33|Hebrew_Win|34|ISO_8859_8|35|");
    std::vector<EncodingRow> rows;
    for (std::size_t i = 0; i < cells.size(); i += 2)
        rows.push_back(
            {"-Encoding=" + utf8_from_utf16(cells[i]), std::stoi(utf8_from_utf16(cells[i + 1]))});
    return rows;
}

constexpr auto some_default = static_cast<TextEncoding>(-7);

int encoding_number(const std::string& switches) {
    return static_cast<int>(encoding_of(SwitchSet(switches), some_default));
}

TEST(Switches, NamesAreFoundAnywhereInAnyLetterCase) {
    const SwitchSet switches("x-EncodingUTF8 NotA-Recursivelywritten,-zip-Quiet");
    for (const char* name : {"-Recursive", "-recursive", "-RECURSIVE", "-zIP", "-quiet", "x-e",
                             "NotA-Recursivelywritten,-zip-Quiet", ""})
        EXPECT_TRUE(switches.has(name)) << name;
    for (const char* name : {"-Recursives", "- zip", "-Quiet ", "-zipp", "y-Encoding"})
        EXPECT_FALSE(switches.has(name)) << name;
    // A name that begins like the text's end, or fails late and begins again.
    EXPECT_FALSE(SwitchSet("-Rec").has("-Recursive"));
    EXPECT_TRUE(SwitchSet("-Re-Rec-Recursive").has("-Recursive"));
    EXPECT_TRUE(SwitchSet("aaaab").has("aab"));
    EXPECT_TRUE(SwitchSet().has(""));
}

TEST(Switches, OnlyTheLettersAToZAreFolded) {
    // Ä and ä in the 8-bit sets, and the neighbours of A, Z, a and z.
    for (const auto& [text, name] : {std::pair{"-\xC4", "-\xE4"},
                                     {"-\x80", "-\x8A"},
                                     {"-@", "-`"},
                                     {"-[", "-{"},
                                     {"-\xC1", "-\xE1"},
                                     {"-A", "-\xC1"}}) {
        EXPECT_FALSE(SwitchSet(text).has(name)) << text;
        EXPECT_FALSE(SwitchSet(name).has(text)) << text;
    }
}

TEST(Switches, TheFirst2000CharactersCount) {
    const std::string end = "-Raw";
    EXPECT_TRUE(SwitchSet(std::string(1996, 'x') + end + "more").has(end));
    EXPECT_FALSE(SwitchSet(std::string(1997, 'x') + end + "more").has(end));
    std::size_t room = 0;
    const SwitchSet filled = SwitchSet::filled_by([&room](auto buffer) {
        room = buffer.size();
        buffer[0] = '-';
        buffer[1] = 'R';
        return std::size_t{2};
    });
    EXPECT_EQ(room, 2001U); // with the terminating zero
    EXPECT_EQ(filled.text(), "-R");
    EXPECT_EQ(SwitchSet(std::string(1999, 'x') + "YZ").text(), std::string(1999, 'x') + "Y");
}

TEST(Switches, AValueEndsAtTheNextMinusSign) {
    struct {
        const char* text;
        const char* name;
        std::size_t capacity;
        const char* expected;
    } const cases[] = {
        {"-Size=12 -Quiet", "-size=", 100, "-size=12 "}, // the name as the caller gave it
        {"-Size=-12-Quiet", "-Size=", 100, "-Size=-12"},
        {"-Size=--Quiet", "-Size=", 100, "-Size=-"},
        {"-Size=", "-Size=", 100, "-Size="},
        {"-Size=1-Size=2", "-Size=", 100, "-Size=1"},
        {"XL-SIZE=1 -Size=2", "-Size=", 100, "-Size=1 "},
        {"-Size=12345", "-Size=", 4, "-Size=123"},
        {"-Size=12345", "-Size=", 6, "-Size=12345"},
        {"-Size=12345", "-Size=", 0, "-Size="},
        {"-Size=12", "-Sizes=", 100, ""},
        {"-Date=1/2 a=b\r-", "-Date=", 100, "-Date=1/2 a=b\r"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SwitchSet(c.text).value(c.name, c.capacity), c.expected)
            << c.text << ' ' << c.capacity;
}

TEST(Encodings, EachNameHasItsNumberAndTheEarliestCounts) {
    const std::vector<EncodingRow> rows = encoding_rows();
    EXPECT_EQ(rows.size(), 38U);
    for (std::size_t first = 0; first < rows.size(); ++first) {
        const auto& [name, number] = rows[first];
        EXPECT_EQ(encoding_number(name), number) << name;
        for (std::size_t later = first + 1; later < rows.size(); ++later) {
            EXPECT_EQ(encoding_number(rows[later].name + " " + name), number) << name;
            EXPECT_EQ(encoding_number(name + rows[later].name), number) << name;
        }
    }
}

TEST(Encodings, UnknownNamesLeaveTheDefault) {
    for (const char* text :
         {"", "UTF8", "-Encoding UTF8", "-Encoding=", "-Encoding=Latin1", "-Encoding= UTF8",
          "-Encoding=UTF16", "-Encoding=ISO_8859_", "Encoding=UTF8", "-Encoding=x UTF8"})
        EXPECT_EQ(encoding_number(text), static_cast<int>(some_default)) << text;
    EXPECT_EQ(encoding_number("-Encoding=Latin1 -encoding=utf8x"), 1);
}

TEST(Encodings, BytesOnlyIsForContentsAlone) {
    EXPECT_EQ(encoding_number("-Encoding=BytesOnly"), static_cast<int>(some_default));
    const SwitchSet both("-Encoding=Native -Encoding=BytesOnly");
    EXPECT_EQ(static_cast<int>(contents_encoding_of(both, some_default)), 4200);
}

} // namespace
} // namespace vell::params
