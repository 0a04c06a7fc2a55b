// Archives on real disks, through the host.
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

class Archives : public PluginWithFolder {
  protected:
    Archives() { folder.subfolder(L"out"); }
    std::u16string create(const std::u16string& source, const std::u16string& target) {
        return call(u"VlFile_CreateZip", {u"", Value(source), Value(target)});
    }
    std::u16string expand(const char16_t* switches, const std::wstring& name) {
        return call(u"VlFile_UnZip", {Value(switches), Value(path(name)), Value(path(L"out"))});
    }
    // An archive with one stored, empty file of this name for each.
    std::u16string archive(const std::vector<std::string>& names) const {
        std::string bytes;
        const auto number = [&](std::uint64_t value, int width) {
            for (int i = 0; i < width; ++i)
                bytes += static_cast<char>(value >> 8 * i);
        };
        for (const std::string& name : names) {
            bytes += "PK\1\2" + std::string(24, '\0');
            number(name.size(), 2);
            bytes += std::string(16, '\0') + name;
        }
        // An entry's place is checked against the archive's length, which the end record makes long
        // enough.
        const std::size_t size = bytes.size();
        bytes += "PK\5\6" + std::string(4, '\0');
        number(names.size(), 2);
        number(names.size(), 2);
        number(size, 4);
        number(0, 6);
        return folder.file(L"made.zip", bytes);
    }
};

TEST_F(Archives, KeepNamesContentsAndTimes) {
    const std::wstring name = L"gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.txt";
    folder.file(L"in\\" + name, std::string(100'000, 'x'));
    SetFileAttributesW(as_wide(folder.file(L"in\\.point\\hidden.lnk", "12")),
                       FILE_ATTRIBUTE_HIDDEN);
    // A path beyond 260 characters, whose archive name is as long.
    folder.file(L"in\\" + deep_name + L"f", "");
    const UniqueFile others = open_file(path(L"in\\" + name), GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(create(path(L"in"), path(L"in\\archive.zip")), u"0"); // within itself
    EXPECT_EQ(expand(u"", L"in\\archive.zip"), u"0");
    EXPECT_EQ(contents(L"out\\in\\" + name), std::string(100'000, 'x'));
    EXPECT_EQ(contents(L"out\\in\\.point\\hidden.lnk"), "12");
    EXPECT_TRUE(exists(u"\\\\?\\" + path(L"out\\in\\" + deep_name + L"f")));
    EXPECT_FALSE(exists(path(L"out\\in\\archive.zip")));
    WIN32_FILE_ATTRIBUTE_DATA before, after;
    GetFileAttributesExW(folder.path(L"in\\" + name).c_str(), GetFileExInfoStandard, &before);
    GetFileAttributesExW(folder.path(L"out\\in\\" + name).c_str(), GetFileExInfoStandard, &after);
    const auto seconds = [](FILETIME time) {
        return (std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) / 10'000'000;
    };
    const std::int64_t lost = seconds(before.ftLastWriteTime) - seconds(after.ftLastWriteTime);
    EXPECT_TRUE(lost == 0 || lost == 1) << lost; // an even number of seconds is kept

    const UniqueFile own = open_file(folder.file(L"in\\own", ""), GENERIC_WRITE);
    EXPECT_EQ(create(path(L"in"), path(L"b.zip")), u"$$-54");
    EXPECT_FALSE(exists(path(L"b.zip")));
    EXPECT_EQ(create(path(L"in"), path(L"none\\b.zip")), u"$$-4402");
    EXPECT_EQ(create(path(L"in"), path(L"b?.zip")), u"$$-208");
}

TEST_F(Archives, ReadNamesInTheirCodePage) {
    const auto names = [&](const char16_t* switches, const std::string& name) {
        return call(u"VlFile_GetZipInfo", {Value(switches), Value(archive({name}))});
    };
    EXPECT_EQ(names(u"", "\x84"), u"\u00E4\r");
    EXPECT_EQ(names(u"-Encoding=ISO_8859_1", "\xE4"), u"\u00E4\r");
    EXPECT_EQ(names(u"-Encoding=ShiftJIS_Win", "\x83\x5C/a"), u"\u30BD/a\r");
    EXPECT_EQ(names(u"-Encoding=UTF8", "\xF0\x9F\x98\x80"), u"\xD83D\xDE00\r");
}

TEST_F(Archives, ReplaceFilesThatOthersHaveOpenButNotThemselves) {
    archive({"a", "made.zip"});
    const std::string before = contents(L"made.zip");
    const UniqueFile others =
        open_file(folder.file(L"a", "old"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(call(u"VlFile_UnZip",
                   {u"-OverwriteExisting -DontCreateArchiveFolder", Value(path(L"made.zip"))}),
              u"$$-4281");
    EXPECT_EQ(contents(L"a"), "");
    EXPECT_EQ(contents(L"made.zip"), before);
}

TEST_F(Archives, LeaveReadOnlyFilesAlone) {
    archive({"a"});
    SetFileAttributesW(as_wide(folder.file(L"out\\a", "old")), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(expand(u"-OverwriteExisting", L"made.zip"), u"$$-4281");
    EXPECT_EQ(contents(L"out\\a"), "old");
    SetFileAttributesW(folder.path(L"out\\a").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Archives, ExpandWhereWindowsSeesOneName) {
    archive({"A.txt", "a.TXT", "a.txt."});
    EXPECT_EQ(expand(u"", L"made.zip"), u"0"); // the later ones take the place of the first
    WIN32_FIND_DATAW found;
    const UniqueFind search(FindFirstFileW(folder.path(L"out\\made\\*.*").c_str(), &found));
    int files = 0;
    do
        files += found.cFileName[0] != L'.';
    while (FindNextFileW(search.get(), &found));
    EXPECT_EQ(files, 1);
    for (const char* name : {"..\\x", "sub/../../x", "con/../x"}) {
        archive({name});
        EXPECT_EQ(expand(u"", L"made.zip"), u"$$-37") << name;
    }
    EXPECT_FALSE(exists(path(L"x")));
    archive({"CON.txt", "src/aux.c"});
    EXPECT_EQ(expand(u"-DontCreateArchiveFolder", L"made.zip"), u"0");
    EXPECT_TRUE(exists(path(L"out\\CON_.txt")) && exists(path(L"out\\src\\aux_.c")));
    archive({"C:\\x:y", "/\x01"});
    EXPECT_EQ(expand(u"-DontCreateArchiveFolder", L"made.zip"), u"$$-208");
    EXPECT_EQ(contents(L"out\\C_\\x_y"), "");
}

} // namespace
} // namespace vell::test
