// Launching, aliases and the host's window through the system's own shell.
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

// What a program that was started writes; empty when it writes nothing for half a minute.
std::string wait_for_line(const std::wstring& path) {
    for (int i = 0; i < 600; ++i) {
        if (std::string text = read_file(path); text.ends_with('\n'))
            return text;
        Sleep(50);
    }
    return {};
}

class ByShell : public PluginWithFolder {
  protected:
    std::u16string create(const std::u16string& switches, const std::u16string& target,
                          const std::u16string& alias) {
        return call(u"VlFile_CreateAlias", {switches, target, alias});
    }
    std::u16string resolve(const char16_t* switches, const std::u16string& alias) {
        return call(u"VlFile_ResolveAlias", {switches, alias});
    }
};

TEST_F(ByShell, LaunchStartsProgramsInTheirFolder) {
    const std::u16string program =
        folder.file(L"mark it.bat", "@echo [%~1] [%~2]>\"%~n0.txt\"\r\n");
    EXPECT_EQ(call(u"VlFile_Launch", {u"-Hide", program, u"one \"two three\""}), u"0");
    EXPECT_EQ(wait_for_line(folder.path(L"mark it.txt")), "[one] [two three]\r\n");

    // By way of an alias with arguments of its own, through the step.
    const std::u16string alias = path(L"\u041F\u0443\u0442\u044C.lnk");
    DeleteFileW(folder.path(L"mark it.txt").c_str());
    EXPECT_EQ(create(u"-Arguments=\"a-b c\"", program, alias), u"0");
    EXPECT_EQ(call_id(7314, {u"", alias}), u"0");
    EXPECT_EQ(wait_for_line(folder.path(L"mark it.txt")), "[a-b] [c]\r\n");

    EXPECT_EQ(call(u"VlFile_Launch", {u"", path(L"no\\ne")}), u"$$-120");
    EXPECT_EQ(call(u"VlFile_Launch", {u"", folder.file(L"x.unknown-type", "")}), u"$$1155");
}

TEST_F(ByShell, AliasesLeadToTheirTargets) {
    const std::u16string file = folder.file(L"d\\\u00FC\u65E5\\x.txt", "x");
    const std::wstring long_name(200, L'n');
    const std::u16string far_alias =
        folder.subfolder(long_name) + u'\\' + to_utf16(long_name) + u".lnk";

    EXPECT_EQ(create(u"", file, path(L"d\\plain")), u"0");
    EXPECT_EQ(
        create(u"-Relative -Description=\"A-B\" -Icon=shell32.dll,4 -WorkingFolder=C:\\windows",
               file, path(L"d\\relative.lnk")),
        u"0");
    EXPECT_EQ(call_id(7306, {u"", path(L"d\\\u00FC\u65E5"), path(L"d\\folder")}), u"0");
    EXPECT_EQ(create(u"", path(L"d\\plain.lnk"), far_alias), u"0");
    EXPECT_EQ(create(u"", far_alias, path(L"b")), u"$$206");
    EXPECT_EQ(create(u"", file, path(L"none\\a")), u"$$-120");

    EXPECT_EQ(resolve(u"", path(L"d\\plain.lnk")), file);
    EXPECT_EQ(resolve(u"", far_alias), file);
    EXPECT_EQ(resolve(u"-GetWorkingFolder", path(L"d\\plain.lnk")), path(L"d\\\u00FC\u65E5\\"));
    EXPECT_EQ(resolve(u"", path(L"d\\folder.lnk")), path(L"d\\\u00FC\u65E5\\"));
    EXPECT_EQ(call(u"VlFile_GetTypeOfItem", {u"-AddAliasInfo", path(L"d\\plain.lnk")}),
              u"file (alias)");
    const std::u16string relative = path(L"d\\relative.lnk");
    EXPECT_EQ(resolve(u"-GetDescription", relative), u"A-B");
    EXPECT_EQ(resolve(u"-GetIcon", relative), u"shell32.dll,4");
    EXPECT_EQ(resolve(u"-GetWorkingFolder", relative), u"C:\\windows\\");

    EXPECT_EQ(resolve(u"", folder.file(L"not.lnk", "text")), u"$$-4249");

    // Two that lead to each other, and one that would lead to itself.
    const std::u16string one = path(L"one.lnk");
    EXPECT_EQ(create(u"", file, one), u"0");
    EXPECT_EQ(create(u"", one, path(L"two")), u"0");
    EXPECT_EQ(create(u"-OverwriteExisting", path(L"two.lnk"), one), u"0");
    EXPECT_EQ(resolve(u"", one), u"$$-4249");
    EXPECT_EQ(create(u"-OverwriteExisting", one, path(L"ONE")), u"$$-50");

    ASSERT_TRUE(MoveFileW(folder.path(L"d").c_str(), folder.path(L"e").c_str()));
    EXPECT_EQ(resolve(u"", path(L"e\\relative.lnk")), path(L"e\\\u00FC\u65E5\\x.txt"));
    EXPECT_EQ(resolve(u"", path(L"e\\plain.lnk")), u"$$-43");
    EXPECT_EQ(resolve(u"-ReturnStoredTarget", path(L"e\\plain.lnk")), file);
}

TEST_F(Plugin, TheHostsWindowComesToTheFront) {
    const TestWindow window(L"FMPROxx.0APP-test");
    if (!window.get())
        GTEST_SKIP() << "no display";
    start({.api_version = 64});
    ShowWindow(window.get(), SW_SHOWMINIMIZED);
    EXPECT_EQ(call(u"VlFile_BringToFront", {}), u"0");
    EXPECT_FALSE(IsIconic(window.get()));
    EXPECT_EQ(GetForegroundWindow(), window.get());
    DestroyWindow(window.get());
    EXPECT_EQ(call_id(7325, {u""}), u"$$-5600");
}

} // namespace
} // namespace vell::test
