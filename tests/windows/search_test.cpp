// Searching real trees, the machine's own disks and special folders, through the host.
#include "src/base/utf8.h"
#include "src/files/paths/special_folders.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <filesystem>

namespace vell::test {
namespace {

class SearchAndDisks : public PluginWithFolder {
  protected:
    std::u16string search(const char16_t* switches, const char16_t* name) {
        return call(u"VlFile_Search", {switches, Value(path()), name});
    }
};

TEST_F(SearchAndDisks, FindNamesOfAllScripts) {
    const std::wstring inner = L"\u0394\u03B5\u03BB\u03C4\u03B1\\";
    const std::u16string greeting = folder.file(inner + L"Gr\u00FC\u00DFe \xD83D\xDE00.txt", "");
    const std::u16string delta = folder.file(L"\u0434\u0435\u043B\u044C\u0442\u0430", "");
    EXPECT_EQ(search(u"-files", u"GR\u00DC\u00DFE"), greeting);
    EXPECT_EQ(search(u"exactname", u"gr??e ?.TXT"), greeting);
    EXPECT_EQ(search(u"exactname", u"\u0414\u0415\u041B\u042C\u0422\u0410"), delta);
    EXPECT_EQ(search(u"", u"\u03B4\u0395\u03BB"), path(L"\u0394\u03B5\u03BB\u03C4\u03B1"));
    EXPECT_EQ(sorted_lines(search(u"-files", u"*")), (Lines{greeting, delta}));
}

TEST_F(SearchAndDisks, TellOfTheMachinesDisks) {
    const Lines disks = lines_of(call(u"VlFile_ListDisks", {u""}));
    EXPECT_TRUE(std::ranges::count(disks, u"C:\\") == 1);
    ULARGE_INTEGER free;
    ULARGE_INTEGER total;
    for (const std::u16string& disk : disks) {
        if (!GetDiskFreeSpaceExW(as_wide(disk), &free, &total, nullptr))
            continue;
        const auto info = [&](const char16_t* switches) {
            return call(u"VlFile_DiskInfo", {switches, Value(disk)});
        };
        EXPECT_EQ(info(u"-TotalSpace"), to_utf16(std::to_wstring(total.QuadPart)));
        // Other programs write meanwhile.
        EXPECT_NEAR(static_cast<double>(std::stoull(to_wide(info(u"-FreeSpace")))),
                    static_cast<double>(free.QuadPart), 1e9);
        EXPECT_NE(info(u"").find(u"\rFileSystem: "), std::u16string::npos);
    }
    EXPECT_EQ(call(u"VlFile_UnmountDisk", {u"", u"C:"}), u"$$-47");
}

TEST_F(SearchAndDisks, DoNotMountWhatIsNotThere) {
    for (const std::u16string& code :
         {call(u"VlFile_MountDisk", {u"", u"", u"no-such-server.invalid", u"pub", u"me", u"x"}),
          call(u"VlFile_UnmountDisk", {u"", u"\\\\no-such-server.invalid\\pub"})})
        EXPECT_TRUE(code == u"$$-35" || code == u"$$-53") << utf8_from_utf16(code);
}

TEST_F(SearchAndDisks, KnowEverySpecialFolderOrSayWhy) {
    for (const files::SpecialFolderWord& row : files::special_folder_words()) {
        const std::u16string word(row.word.begin(), row.word.end());
        const std::u16string text = call(u"VlFile_FindFolder", {Value(u"-" + word)});
        if (text.starts_with(u"$$")) {
            const bool is_trash = row.folder == files::SpecialFolder::Trash;
            EXPECT_TRUE(is_trash ? text == u"$$-4243" : text == u"$$-120" || text == u"$$-4301")
                << row.word << ' ' << utf8_from_utf16(text);
            continue;
        }
        EXPECT_TRUE(std::filesystem::is_directory(text) && text.ends_with(u"\\") &&
                    !text.ends_with(u"\\\\"))
            << row.word << ' ' << utf8_from_utf16(text);
    }
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    EXPECT_EQ(call(u"VlFile_FindFolder", {u"-WindowsFolder"}), to_utf16(windows) + u"\\");
}

} // namespace
} // namespace vell::test
