// Archives on real disks, through the host.
#include "tests/portable/zip_builder.h"
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
    void archive(const std::vector<std::string>& names) const {
        folder.file(L"made.zip", test::zip_of(names));
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

TEST_F(Archives, ReplaceFilesThatOthersHaveOpenButNotThemselves) {
    archive({"a", "made.zip"});
    const std::string before = contents(L"made.zip");
    const UniqueFile others =
        open_file(folder.file(L"a", "old"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(call(u"VlFile_UnZip",
                   {u"-OverwriteExisting -DontCreateArchiveFolder", Value(path(L"made.zip"))}),
              u"$$-4281");
    EXPECT_EQ(contents(L"a"), "a");
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
    archive({"C:\\x:y", "/\x05"});
    EXPECT_EQ(expand(u"-DontCreateArchiveFolder", L"made.zip"), u"$$-208");
    EXPECT_EQ(contents(L"out\\C_\\x_y"), "C:\\x:y");
}

} // namespace
} // namespace vell::test
