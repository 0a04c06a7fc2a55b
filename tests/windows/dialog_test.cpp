// The dialog of VlFile_ContentsDialog, driven as a user drives it.
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

TEST_F(Plugin, ContentsDialogIsNotShownOnAServer) {
    start({.application_type = server});
    EXPECT_EQ(call(u"VlFile_ContentsDialog", {u"", u"Pick"}), u"$$-4251");
    start();
    EXPECT_EQ(call(u"VlFile_ContentsDialog", {u"", u"Pick", u"$$-43"}), u"$$-4299");
}

} // namespace
} // namespace vell::test
