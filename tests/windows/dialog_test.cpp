// The dialogs to select files and folders, driven as a user drives them.
#include "src/base/win32_text.h"
#include "src/files/file_dialog.h"
#include "tests/windows/plugin_fixture.h"

#include <atomic>
#include <thread>

namespace vell::test {
namespace {

TEST(FilePatterns, TakeTypesInEveryForm) {
    EXPECT_EQ(files::file_patterns(u""), u"");
    EXPECT_EQ(files::file_patterns(u"txt"), u"*.txt");
    EXPECT_EQ(files::file_patterns(u" txt, .doc;*.jpg\rpng "), u"*.txt;*.doc;*.jpg;*.png");
    EXPECT_EQ(files::file_patterns(u"*.* ,;"), u"*.*");
}

constexpr int file_name_control = 1152; // the dialog's field for the name

constexpr const char16_t* accepted = u"\1"; // the name that the dialog proposes

// Waits for the dialog of a title and answers it: with a file name, or with Cancel for an empty
// one.
class User {
  public:
    User(std::u16string title, std::u16string file_name)
        : thread_([this, title, file_name] { answer(title, file_name); }) {}
    ~User() {
        gone_ = true;
        thread_.join();
    }

  private:
    void answer(const std::u16string& title, const std::u16string& file_name) {
        while (!gone_) {
            Sleep(20);
            const HWND dialog = FindWindowW(nullptr, as_wide(title));
            const HWND name = dialog ? GetDlgItem(dialog, file_name_control) : nullptr;
            if (!name || !IsWindowVisible(dialog))
                continue;
            if (file_name != accepted)
                SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(as_wide(file_name)));
            PostMessageW(dialog, WM_COMMAND, file_name.empty() ? IDCANCEL : IDOK, 0);
            Sleep(200);
        }
    }

    std::atomic<bool> gone_ = false;
    std::thread thread_;
};

bool has_display() {
    const HWND window = CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
    return DestroyWindow(window) != FALSE;
}

TEST_F(Plugin, ContentsDialogGivesTheFileThatTheUserSelects) {
    if (!has_display())
        GTEST_SKIP() << "no display";
    start();
    const TemporaryFolder folder;
    const std::u16string file = folder.file(L"chosen.txt", "gr\xC3\xBC\xC3\x9F\r\n");
    const std::u16string folder_path = to_utf16(folder.path());
    {
        const User user(u"Pick a text", file);
        EXPECT_EQ(call(u"VlFile_ContentsDialog",
                       {u"-Encoding=UTF8 -ConvertToFMPLinebreaks", u"Pick a text", folder_path}),
                  u"gr\u00FC\u00DF\r");
    }
    {
        const User user(u"Select a file.", u"");
        EXPECT_EQ(call(u"VlFile_ContentsDialog", {u""}), u"$$-128");
    }
    const auto number = [](int value) {
        return Value(console::Decimal(value));
    };
    {
        const User user(u"The step's", file);
        EXPECT_EQ(call_id(7202, {u"", u"The step's", folder_path, number(4200), number(0)}),
                  u"gr\u00C3\u00BC\u00C3\u009F\r\n");
    }
}

TEST_F(Plugin, SelectDialogsGiveThePathsThatTheUserSelects) {
    if (!has_display())
        GTEST_SKIP() << "no display";
    start();
    const TemporaryFolder folder;
    const std::u16string folder_path = to_utf16(folder.path());
    const std::u16string a = folder.file(L"a \u00E4.txt", "");
    const std::u16string b = folder.file(L"b.txt", "");
    const auto number = [](int value) {
        return Value(console::Decimal(value));
    };
    const std::u16string both = u"\"a \u00E4.txt\" \"b.txt\"";
    const auto lines_are_a_and_b = [&](const std::u16string& lines) {
        return lines == a + u'\r' + b || lines == b + u'\r' + a;
    };
    {
        const User user(u"One", a);
        EXPECT_EQ(call(u"VlFile_SelectFileDialog", {u"-Types=txt", u"One", folder_path}), a);
    }
    {
        const User user(u"Several", both);
        EXPECT_TRUE(lines_are_a_and_b(
            call(u"VlFile_SelectFileDialog", {u"-AllowMultipleFiles", u"Several", folder_path})));
    }
    {
        const User user(u"The step's", both);
        EXPECT_TRUE(lines_are_a_and_b(call_id(
            7271, {u"", u"The step's", folder_path, number(1), number(0), number(0), number(0)})));
    }
    {
        const User user(u"Save", u"new");
        EXPECT_EQ(call(u"VlFile_SaveFileDialog", {u"", u"Save", u"report.pdf", folder_path}),
                  folder_path + u"new.pdf");
    }
    {
        const User user(u"Default", accepted);
        EXPECT_EQ(call(u"VlFile_SaveFileDialog", {u"", u"Default", u"report.pdf", folder_path}),
                  folder_path + u"report.pdf");
    }
    {
        const User user(u"Over", u"b.txt");
        EXPECT_EQ(call(u"VlFile_SaveFileDialog",
                       {u"-NoOverwritePrompt", u"Over", u"report.txt", folder_path}),
                  b);
    }
    {
        // Wine gives this dialog a title of its own, which is the one of the call here.
        const User user(u"Select Folder", folder_path.substr(0, folder_path.size() - 1));
        EXPECT_EQ(call(u"VlFile_SelectFolderDialog", {u"", u"Select Folder", u"C:/"}), folder_path);
    }
    for (const char16_t* function :
         {u"VlFile_SelectFileDialog", u"VlFile_SelectFolderDialog", u"VlFile_SaveFileDialog"}) {
        const User user(u"Select Folder", u"");
        EXPECT_EQ(call(function, {u"", u"Select Folder"}), u"$$-128");
    }
}

TEST_F(Plugin, ContentsDialogIsNotShownOnAServer) {
    start({.application_type = server});
    EXPECT_EQ(call(u"VlFile_ContentsDialog", {u"", u"Pick"}), u"$$-4251");
    start();
    EXPECT_EQ(call(u"VlFile_ContentsDialog", {u"", u"Pick", u"$$-43"}), u"$$-4299");
}

} // namespace
} // namespace vell::test
