// Switches, their values and the encodings that they choose.
#include "src/params/encodings.h"
#include "src/params/switches.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::params {
namespace {

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
    for (const auto& row : test::table("switch_values.txt", 4))
        EXPECT_EQ(SwitchSet(row[0]).value(row[1], std::stoul(row[2])), row[3])
            << row[0] << ' ' << row[2];
}

TEST(Encodings, EachNameHasItsNumberAndTheEarliestCounts) {
    const auto rows = test::table("encodings.txt", 2);
    EXPECT_EQ(rows.size(), 38U);
    for (std::size_t first = 0; first < rows.size(); ++first) {
        const std::string name = "-Encoding=" + rows[first][0];
        const int number = std::stoi(rows[first][1]);
        EXPECT_EQ(encoding_number(name), number) << name;
        for (std::size_t later = first + 1; later < rows.size(); ++later) {
            const std::string other = "-Encoding=" + rows[later][0];
            EXPECT_EQ(encoding_number(other + " " + name), number) << name;
            EXPECT_EQ(encoding_number(name + other), number) << name;
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

TEST(AskedNames, TellWordsThatNobodyAskedFor) {
    SwitchSet switches("-SHA1 -sha256, \"-in quotes\" -Colons-Path=x -Files 3 -5 a-b -");
    AskedNames asked;
    switches.note_in(asked);
    const SwitchSet copy = switches;
    EXPECT_TRUE(copy.has("-SHA1") && copy.has("files"));
    copy.value("-Path=", 20);
    EXPECT_EQ(asked.unknown_in(switches.text()), std::vector<std::string_view>{"-sha256"});
}

} // namespace
} // namespace vell::params
