// VlFile_ListFolder and VlFile_GetFolderSize on real trees, through the host.
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "tests/windows/plugin_fixture.h"

#include <winioctl.h>

#include <algorithm>
#include <set>

namespace vell::test {
namespace {

std::vector<std::u16string> lines_of(const std::u16string& text) {
    std::vector<std::u16string> lines(1);
    for (const char16_t c : text) {
        if (c == u'\r')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    return lines;
}

std::set<std::u16string> set_of(const std::u16string& text) {
    const std::vector<std::u16string> lines = lines_of(text);
    return {lines.begin(), lines.end()};
}

using Names = std::set<std::u16string>;

class Listing : public Plugin {
  protected:
    Listing() {
        start();
        make_folder(L"sub");
        make_folder(L"sub\\deep");
        make_folder(L"empty");
        folder.file(L"a.txt", "12345");
        folder.file(L"link.LNK", "1");
        folder.file(L"sub\\gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.txt", "1234567");
        folder.file(L"sub\\deep\\z", "1");
        folder.file(L"secret", "123");
        SetFileAttributesW(folder.path(L"secret").c_str(), FILE_ATTRIBUTE_HIDDEN);
    }

    void make_folder(const std::wstring& name) const {
        ASSERT_TRUE(CreateDirectoryW(folder.path(name).c_str(), nullptr));
    }
    std::u16string list(const char16_t* switches, const std::u16string& path) {
        return call(u"VlFile_ListFolder", {Value(switches), Value(path)});
    }
    std::u16string list(const char16_t* switches) {
        return list(switches, to_utf16(folder.path()));
    }
    std::u16string size_of(const std::u16string& path) {
        return call(u"VlFile_GetFolderSize", {u"", Value(path)});
    }

    TemporaryFolder folder;
};

TEST_F(Listing, GivesWhatTheSwitchesAskFor) {
    const Names files{u"a.txt"};
    const Names folders{u"sub", u"empty"};
    const std::u16string greeting = u"sub/gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.txt";
    EXPECT_EQ(set_of(list(u"files")), files);
    EXPECT_EQ(set_of(list(u"folders")), folders);
    EXPECT_EQ(set_of(list(u"files showshortcuts showinvisibles")),
              (Names{u"a.txt", u"link.LNK", u"secret"}));
    EXPECT_EQ(set_of(list(u"folders -AddFolderSuffix showpointdirs showinvisibles")),
              (Names{u"./", u"../", u"sub/", u"empty/"}));
    EXPECT_EQ(set_of(list(u"files -recursive")), (Names{u"a.txt", greeting, u"sub/deep/z"}));
    const std::u16string all = list(u"files folders -recursive -AddFolderSuffix");
    EXPECT_EQ(set_of(all),
              (Names{u"a.txt", u"sub/", greeting, u"sub/deep/", u"sub/deep/z", u"empty/"}));
    // A folder stands right before its contents.
    EXPECT_NE(all.find(u"sub/deep/\rsub/deep/z"), std::u16string::npos);
    EXPECT_EQ(list(u"files folders -recursive -AddFolderSuffix -ReturnAtEnd"), all + u"\r");
    EXPECT_EQ(list(u"files", to_utf16(folder.path(L"empty"))), u"");
    EXPECT_EQ(list(u"files", u"filewin:/" + to_utf16(folder.path(L"sub\\deep"))), u"z");
}

TEST_F(Listing, KeepsTheFileSystemsOrder) {
    for (int i = 0; i < 60; ++i)
        folder.file(L"empty\\" + std::to_wstring(i * 7919 % 1000), "");
    std::vector<std::u16string> bare;
    WIN32_FIND_DATAW found;
    const HANDLE find = FindFirstFileW(folder.path(L"empty\\*.*").c_str(), &found);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    do {
        if (found.cFileName[0] != L'.')
            bare.push_back(to_utf16(found.cFileName));
    } while (FindNextFileW(find, &found));
    FindClose(find);
    EXPECT_EQ(bare.size(), 60u);
    EXPECT_EQ(lines_of(list(u"files", to_utf16(folder.path(L"empty\\")))), bare);
}

TEST_F(Listing, GivesTheNamesOfTheOldForm) {
    const std::wstring name = L"a name longer than eight characters.text";
    folder.file(L"empty\\" + name, "");
    wchar_t shortened[MAX_PATH + 1];
    ASSERT_GT(GetShortPathNameW(folder.path(L"empty\\" + name).c_str(), shortened, MAX_PATH), 0u);
    const std::u16string path = to_utf16(shortened);
    EXPECT_EQ(list(u"files shortnames", to_utf16(folder.path(L"empty"))),
              path.substr(path.rfind(u'\\') + 1));
    EXPECT_EQ(list(u"files", to_utf16(folder.path(L"empty"))), to_utf16(name));
}

TEST_F(Listing, ReportsWhatKeepsItFromListing) {
    const std::u16string top = to_utf16(folder.path());
    EXPECT_EQ(call_id(4254, {u"files"}), u"$$-50");
    EXPECT_EQ(list(u""), u"$$-50");
    EXPECT_EQ(list(u"files", u""), u"$$-50");
    EXPECT_EQ(list(u"files", u"$$-120"), u"$$-4299");
    EXPECT_EQ(list(u"files", top + u"a.txt"), u"$$-1407");
    EXPECT_EQ(list(u"files", top + u"none"), u"$$-120");
    EXPECT_EQ(list(u"files", top + u"none\\none"), u"$$-120");
    EXPECT_EQ(list(u"files", top + std::u16string(2000, u'.') + u"\\"), u"$$-120");
    EXPECT_EQ(call_id(4315, {u""}), u"$$-50");
    EXPECT_EQ(size_of(top + u"a.txt"), u"$$-1407");
    EXPECT_EQ(size_of(top + u"none"), u"$$-120");
}

TEST_F(Listing, SumsUpTheSizesOfAllFiles) {
    EXPECT_EQ(size_of(to_utf16(folder.path())), u"17");
    EXPECT_EQ(size_of(to_utf16(folder.path(L"empty"))), u"0");
    const UniqueFile huge(CreateFileW(folder.path(L"sub\\huge").c_str(), GENERIC_WRITE, 0, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD done = 0;
    DeviceIoControl(huge.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
    LARGE_INTEGER length;
    length.QuadPart = 5'000'000'000;
    ASSERT_TRUE(SetFilePointerEx(huge.get(), length, nullptr, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(huge.get()));
    EXPECT_EQ(size_of(to_utf16(folder.path())), u"5000000017");
}

TEST_F(Listing, GoesDownBeyond260CharactersAndComesBack) {
    // 500 levels below the top, of which the path has room for two characters each.
    std::wstring path = L"\\\\?\\" + folder.path(L"empty");
    for (int i = 0; i < 500; ++i) {
        path += L"\\d";
        ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr)) << i << ' ' << GetLastError();
    }
    CloseHandle(CreateFileW((path + L"\\f").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::u16string text = list(u"files folders -recursive", to_utf16(folder.path(L"empty")));
    const std::vector<std::u16string> lines = lines_of(text);
    ASSERT_EQ(lines.size(), 501u);
    EXPECT_EQ(lines[0], u"d");
    EXPECT_EQ(lines[1], u"d/d");
    EXPECT_TRUE(lines[500].ends_with(u"/d/f"));
    EXPECT_EQ(list(u"files", to_utf16(path)), u"f");
    EXPECT_EQ(size_of(to_utf16(folder.path())), u"17");
}

} // namespace
} // namespace vell::test
