// VlFile_ListFolder and VlFile_GetFolderSize on real trees, through the host.
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

class Listing : public PluginWithFolder {
  protected:
    Listing() {
        folder.subfolder(L"empty");
        folder.file(L"a.txt", "12345");
        folder.file(L"link.LNK", "1");
        folder.file(L"sub\\gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.txt", "1234567");
        folder.file(L"sub\\deep\\z", "1");
        SetFileAttributesW(as_wide(folder.file(L"secret", "123")), FILE_ATTRIBUTE_HIDDEN);
    }

    std::u16string list(const char16_t* switches, const std::u16string& path) {
        return call(u"VlFile_ListFolder", {Value(switches), Value(path)});
    }
    std::u16string list(const char16_t* switches) { return list(switches, path()); }
    std::u16string size_of(const std::u16string& path) {
        return call(u"VlFile_GetFolderSize", {u"", Value(path)});
    }
};

TEST_F(Listing, GivesWhatTheSwitchesAskFor) {
    EXPECT_EQ(sorted_lines(list(u"files showshortcuts showinvisibles")),
              (Lines{u"a.txt", u"link.LNK", u"secret"}));
    EXPECT_EQ(sorted_lines(list(u"folders -AddFolderSuffix showpointdirs showinvisibles")),
              (Lines{u"../", u"./", u"empty/", u"sub/"}));
    EXPECT_EQ(sorted_lines(list(u"files -recursive")),
              (Lines{u"a.txt", u"sub/deep/z", u"sub/gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.txt"}));
    EXPECT_EQ(list(u"files", path(L"empty")), u"");
}

TEST_F(Listing, KeepsTheFileSystemsOrder) {
    for (int i = 0; i < 60; ++i)
        folder.file(L"empty\\" + std::to_wstring(i * 7919 % 1000), "");
    std::vector<std::u16string> bare;
    WIN32_FIND_DATAW found;
    const UniqueFind find(FindFirstFileW(folder.path(L"empty\\*.*").c_str(), &found));
    do
        if (found.cFileName[0] != L'.')
            bare.push_back(to_utf16(found.cFileName));
    while (FindNextFileW(find.get(), &found));
    EXPECT_EQ(bare.size(), 60u);
    EXPECT_EQ(lines_of(list(u"files", path(L"empty\\"))), bare);
}

TEST_F(Listing, GivesTheNamesOfTheOldForm) {
    const std::wstring name = L"a name longer than eight characters.text";
    wchar_t shortened[MAX_PATH + 1];
    ASSERT_GT(GetShortPathNameW(as_wide(folder.file(L"empty\\" + name, "")), shortened, MAX_PATH),
              0u);
    EXPECT_EQ(list(u"files shortnames", path(L"empty")),
              to_utf16(std::wcsrchr(shortened, L'\\') + 1));
    EXPECT_EQ(list(u"files", path(L"empty")), to_utf16(name));
}

TEST_F(Listing, ReportsWhatKeepsItFromListing) {
    EXPECT_EQ(list(u"files", path(L"a.txt")), u"$$-1407");
    for (const std::wstring& missing :
         {std::wstring(L"none"), std::wstring(L"none\\none"), std::wstring(2000, L'.') + L"\\"})
        EXPECT_EQ(list(u"files", path(missing)), u"$$-120");
}

TEST_F(Listing, SumsUpTheSizesOfAllFiles) {
    EXPECT_EQ(size_of(path()), u"17");
    set_length(open_file(folder.file(L"sub\\huge", ""), GENERIC_WRITE), 5'000'000'000);
    EXPECT_EQ(size_of(path()), u"5000000017");
}

TEST_F(Listing, GoesDownBeyond260CharactersAndComesBack) {
    // 500 levels below the top, of which the path has room for two characters each.
    std::wstring name = L"empty";
    for (int i = 0; i < 500; ++i)
        name += L"\\d";
    folder.file(name + L"\\f", "");
    const std::u16string text = list(u"files folders -recursive", path(L"empty"));
    const std::vector<std::u16string> lines = lines_of(text);
    ASSERT_EQ(lines.size(), 501u);
    EXPECT_EQ(lines[0], u"d");
    EXPECT_EQ(lines[1], u"d/d");
    EXPECT_TRUE(lines[500].ends_with(u"/d/f"));
    EXPECT_EQ(list(u"files", path(name)), u"f");
    EXPECT_EQ(size_of(path()), u"17");
}

} // namespace
} // namespace vell::test
