// Names in archives and the paths that they become.
#include "src/archive/entry_path.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::archive {
namespace {

std::u16string latin(std::string_view bytes, params::TextEncoding) {
    std::u16string text;
    for (const char byte : bytes)
        text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return text;
}

EntryInfo entry_of(std::string_view name) {
    EntryInfo entry;
    entry.name = name;
    entry.is_folder = name.ends_with('/');
    return entry;
}

TEST(EntryPath, StaysInTheTargetFolder) {
    for (const auto& row : test::wide_table("entry_paths.txt", 2)) {
        std::string name; // in Latin-1
        for (const char16_t unit : row[0])
            name += static_cast<char>(unit);
        const auto path = entry_path(entry_of(name), row[0]);
        EXPECT_EQ(path ? *path : u"refused", row[1]) << name;
        EXPECT_TRUE(path || path.error() == ErrorCode::BadName);
    }
    // A parent folder that only the bytes, or only the decoded name, show.
    EXPECT_FALSE(entry_path(entry_of("a/../b"), u"harmless"));
    EXPECT_FALSE(entry_path(entry_of("harmless"), u"a/../b"));
}

TEST(EntryPath, DecodesNamesWithoutLosingAny) {
    EntryInfo entry;
    const auto decoded = [&](const std::string& name, bool utf8) {
        entry.name = name;
        entry.utf8_name = utf8;
        return decoded_name(entry, params::TextEncoding::AsciiDos, latin);
    };
    EXPECT_EQ(decoded("\xC3\xA4", true), u"\u00E4");
    EXPECT_EQ(decoded("\xF0\x9F\x98\x80", true), u"\xD83D\xDE00");
    EXPECT_EQ(decoded("\xC3\xA4", false), u"\u00C3\u00A4");
    EXPECT_EQ(decoded("\xE4", true), u"\u00E4"); // says it is UTF-8, and is not
    EXPECT_EQ(decoded("a\\~", false), u"a\\~");
    // Cut at the most bytes that are used, in the midst of a character.
    const std::string longest = std::string(1'998, 'n') + "\xC3\xA4";
    EXPECT_EQ(decoded(longest.substr(0, 1'999), true), std::u16string(1'998, u'n'));
}

} // namespace
} // namespace vell::archive
