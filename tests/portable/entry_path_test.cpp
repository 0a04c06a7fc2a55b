// Names in archives and the paths that they become.
#include "src/archive/entry_path.h"

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

std::u16string path_of(std::string_view name) {
    const auto path = entry_path(entry_of(name), latin(name, {}));
    if (path)
        return *path;
    EXPECT_EQ(path.error(), ErrorCode::BadName);
    return u"<bad>";
}

TEST(EntryPath, StaysInTheTargetFolder) {
    constexpr std::pair<std::string_view, std::u16string_view> names[] = {
        {"a/b/", u"a\\b"},
        {"a\\b", u"a\\b"},
        {"a:b?.txt", u"a_b_.txt"},
        {"\"*<>|", u"_____"},
        {"a /b ", u"a_\\b_"},
        {"C:/x", u"C_\\x"},
        {"/x", u"x"},
        {"\\\\server\\share\\x", u"server\\share\\x"},
        {"//?/C:/x", u"_\\C_\\x"},
        {"a//b", u"a\\b"},
        {"./a/./b", u"a\\b"},
        {"a..b/c..", u"a..b\\c.."},
        {".git/...x", u".git\\...x"},
        {"COM10/console.txt", u"COM10\\console.txt"},
        {"CON:", u"CON_"},
        {"a/./", u"a"},
        {"/.//", u""}, // the target folder itself
        // What Windows takes for a device gets a name of its own.
        {"CON", u"CON_"},
        {"src/aux.c", u"src\\aux_.c"},
        {"aux/nul.tar.gz", u"aux_\\nul_.tar.gz"},
        {"PRN .x", u"PRN _.x"},
        {"COM1", u"COM1_"},
        {"lpt9.a.b", u"lpt9_.a.b"},
        {"COM\xB9", u"COM\u00B9_"},
        {"conout$.x", u"conout$_.x"},
        {"nul.", u"nul_."},
    };
    for (const auto& [name, path] : names)
        EXPECT_EQ(path_of(name), path) << name;
}

TEST(EntryPath, RefusesWhatNamesSomethingElse) {
    using namespace std::string_view_literals;
    constexpr std::string_view names[] = {
        ""sv,     "\\"sv,      "."sv,        ".\\"sv,    "a/."sv,      "../"sv,
        "../a"sv, "a/../b"sv,  "a\\..\\b"sv, "a/.."sv,   "..\\"sv,     "/..\\a"sv,
        "..."sv,  "a/.../b"sv, ". ./a"sv,    "a/ ./b"sv, "con/../x"sv, "a\0b"sv,
    };
    for (const std::string_view name : names)
        EXPECT_EQ(path_of(name), u"<bad>") << name;
    // A parent folder that only the bytes, or only the decoded name, show.
    EXPECT_FALSE(entry_path(entry_of("a/../b"), u"harmless"));
    EXPECT_FALSE(entry_path(entry_of("harmless"), u"a/../b"));
}

TEST(EntryPath, DecodesNamesWithoutLosingAny) {
    EntryInfo entry;
    const auto decoded = [&](std::string name, bool utf8) {
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
