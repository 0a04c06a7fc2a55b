// What our own code reads and writes of shell links, and the values of their switches.
#include "src/base/utf8.h"
#include "src/files/paths/relative_path.h"
#include "src/formats/shell_link_file.h"
#include "src/params/switch_text.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using namespace std::string_view_literals;
using formats::read_link_file;
using formats::with_relative_target;

// MS-SHLLINK 2.1 with the flags HasLinkTargetIDList, HasLinkInfo, HasName and IsUnicode; then an ID
// list, link information, a name, and what a test wants behind them.
std::string link_bytes(char attributes, std::string_view rest) {
    std::string bytes("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46\x87\0\0\0", 24);
    bytes += attributes;
    bytes.resize(0x4C, '\0');
    bytes += std::string_view("\x02\0\0\0"
                              "\x05\0\0\0!"
                              "\x01\0n\0",
                              13);
    return bytes.append(rest);
}

TEST(ShellLinkFile, TakesARelativePathBetweenItsParts) {
    const std::string plain = link_bytes(0x10, "tail");
    const std::string related = with_relative_target(plain, u"..\\\u00E4").value();
    std::string expected = link_bytes(0x10, std::string_view("\x04\0.\0.\0\\\0\xE4\0tail", 14));
    expected[20] = static_cast<char>(0x8F);
    EXPECT_EQ(related, expected);
    EXPECT_EQ(read_link_file(related)->relative_target, u"..\\\u00E4");
    EXPECT_TRUE(read_link_file(related)->leads_to_folder);
    EXPECT_EQ(with_relative_target(related, u"..\\\u00E4").value(), related);
    EXPECT_EQ(read_link_file(plain)->relative_target, u"");
    for (std::size_t size = 0; size < related.size() - 4; ++size)
        EXPECT_FALSE(read_link_file(std::string_view(related).substr(0, size))) << size;
    std::string huge = related; // link information that says it has 4 GiB
    huge.replace(0x4C + 4, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_FALSE(read_link_file(huge));
    // Lists of items that the system would follow beyond their ends.
    for (const auto& [list, is_whole] : {std::pair{"\x06\0\x04\0ab\0\0"sv, true},
                                         {"\x06\0\x05\0ab\0\0"sv, false},
                                         {"\x04\0\x04\0ab"sv, false},
                                         {"\x04\0\x01\0\0\0"sv, false},
                                         {"\0\0"sv, false}})
        EXPECT_EQ(read_link_file(std::string(plain).replace(0x4C, 4, list)).has_value(), is_whole);
}

TEST(ShellLinkFile, KnowsTheWayToAnItem) {
    for (const auto& row : test::wide_table("relative_paths.txt", 3))
        EXPECT_EQ(relative_path(row[0], row[1]).value_or(u"none"), row[2])
            << utf8_from_utf16(row[0]);
}

TEST(SwitchText, EndsAsItIsWritten) {
    using params::switch_text;
    EXPECT_EQ(switch_text(u"-Icon= C:\\a.ico -Relative", u"-icon="), u"C:\\a.ico");
    EXPECT_EQ(switch_text(u"-Arguments=\"/a -b \"\"c\"\" \"-Icon=x", u"-Arguments="),
              u"/a -b \"c\" ");
    EXPECT_EQ(switch_text(u"-A=\"-Icon=x\" -Icon=y", u"-Icon="), u"y");
    EXPECT_EQ(switch_text(u"-Icon=\"\u0416", u"-Icon="), u"\u0416");
    EXPECT_EQ(switch_text(u"-Icon=-1", u"-Icon="), u"-1");
    EXPECT_EQ(switch_text(u"-Icon", u"-Icon="), std::nullopt);
}

} // namespace
} // namespace vell::files
