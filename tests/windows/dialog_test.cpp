// The dialogs to select files and folders, driven as a user drives them.
#include "src/system/file_dialog.h"
#include "src/windows/desktop/com.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <cwchar>

namespace vell::test {
namespace {

TEST(ErrorFromHresult, UnwrapsOnlyErrorsOfWin32) {
    const std::pair<std::uint32_t, int> cases[] = {
        {0x80070005, -47},                        // E_ACCESSDENIED
        {0x8007000E, -108},                       // E_OUTOFMEMORY
        {0x800704C7, -128},                       // ERROR_CANCELLED
        {0x80070483, 1155},  {0x80004005, -4295}, // E_FAIL
        {0x80030005, -4295},                      // of a storage
        {0x80070000, -4295},
    };
    for (const auto& [result, code] : cases)
        EXPECT_EQ(number(error_from_hresult(static_cast<HRESULT>(result))), code)
            << std::hex << result;
}

// The dialog's field for the name: its number depends on the system and on what is selected, and on
// Windows it stands below other windows.
HWND name_field(HWND dialog) {
    static constexpr int numbers[] = {1152, 1148, 1001};
    HWND found = nullptr;
    struct Search {
        static BOOL CALLBACK look_at(HWND window, LPARAM argument) {
            wchar_t name[20] = L"";
            GetClassNameW(window, name, 20);
            const bool is_field = std::wcscmp(name, L"Edit") == 0 && IsWindowVisible(window) &&
                                  std::ranges::count(numbers, GetDlgCtrlID(window)) > 0;
            if (is_field)
                *reinterpret_cast<HWND*>(argument) = window;
            return !is_field;
        }
    };
    EnumChildWindows(dialog, Search::look_at, reinterpret_cast<LPARAM>(&found));
    return found;
}

constexpr const char16_t* accepted = u"\1"; // the name that the dialog proposes

// Waits for the dialog of a title and answers it: with a file name, or with Cancel for an empty
// one.
class User {
  public:
    User(const std::u16string& title, const std::u16string& file_name)
        : watcher_([title, file_name] { answer(title, file_name); }) {}

  private:
    static void answer(const std::u16string& title, const std::u16string& file_name) {
        const HWND dialog = own_window(L"", to_wide(title));
        const HWND name = dialog ? name_field(dialog) : nullptr;
        if (!name || !IsWindowVisible(dialog))
            return;
        if (file_name != accepted)
            SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(as_wide(file_name)));
        PostMessageW(dialog, WM_COMMAND, file_name.empty() ? IDCANCEL : IDOK, 0);
        Sleep(200);
    }

    Watcher watcher_;
};

class Dialogs : public PluginWithFolder {
  protected:
    void SetUp() override {
        if (!TestWindow().get())
            GTEST_SKIP() << "no display";
    }
    // The call's answer when the user answers the dialog of this title with a name.
    std::u16string answered(const std::u16string& title, const std::u16string& name,
                            std::u16string_view function, std::vector<Value> arguments) {
        const User user(title, name);
        return call(function, std::move(arguments));
    }
    std::u16string step_answered(const std::u16string& name, std::int16_t id,
                                 std::vector<Value> arguments) {
        const User user(u"The step's", name);
        arguments.insert(arguments.begin(), {u"", u"The step's"});
        return call_id(id, std::move(arguments));
    }
};

TEST_F(Dialogs, ContentsDialogGivesTheFileThatTheUserSelects) {
    const std::u16string file = folder.file(L"chosen.txt", "gr\xC3\xBC\xC3\x9F\r\n");
    EXPECT_EQ(answered(u"Pick a text", file, u"VlFile_ContentsDialog",
                       {u"-Encoding=UTF8 -ConvertToFMPLinebreaks", u"Pick a text", path()}),
              u"gr\u00FC\u00DF\r");
    EXPECT_EQ(answered(u"Select a file.", u"", u"VlFile_ContentsDialog", {u""}), u"$$-128");
    EXPECT_EQ(step_answered(file, 7202, {path(), number(4200), number(0)}),
              u"gr\u00C3\u00BC\u00C3\u009F\r\n");
}

TEST_F(Dialogs, SelectDialogsGiveThePathsThatTheUserSelects) {
    const std::u16string a = folder.file(L"a \u00E4.txt", "");
    const std::u16string b = folder.file(L"b.txt", "");
    const std::u16string both = u"\"a \u00E4.txt\" \"b.txt\"";
    const auto lines_are_a_and_b = [&](const std::u16string& lines) {
        return lines == a + u'\r' + b || lines == b + u'\r' + a;
    };
    EXPECT_EQ(answered(u"One", a, u"VlFile_SelectFileDialog", {u"-Types=txt", u"One", path()}), a);
    EXPECT_TRUE(lines_are_a_and_b(answered(u"Several", both, u"VlFile_SelectFileDialog",
                                           {u"-AllowMultipleFiles", u"Several", path()})));
    EXPECT_TRUE(lines_are_a_and_b(
        step_answered(both, 7271, {path(), number(1), number(0), number(0), number(0)})));
    const auto saved = [&](const std::u16string& name, const char16_t* switches,
                           const char16_t* proposed) {
        return answered(u"Save", name, u"VlFile_SaveFileDialog",
                        {switches, u"Save", proposed, path()});
    };
    EXPECT_EQ(saved(u"new", u"", u"report.pdf"), path(L"new.pdf"));
    EXPECT_EQ(saved(accepted, u"", u"report.pdf"), path(L"report.pdf"));
    EXPECT_EQ(saved(u"b.txt", u"-NoOverwritePrompt", u"report.txt"), b);
    // Wine gives this dialog a title of its own, which is the one of the call here.
    EXPECT_EQ(answered(u"Select Folder", path().substr(0, path().size() - 1),
                       u"VlFile_SelectFolderDialog", {u"", u"Select Folder", u"C:/"}),
              path());
    for (const char16_t* function :
         {u"VlFile_SelectFileDialog", u"VlFile_SelectFolderDialog", u"VlFile_SaveFileDialog"})
        EXPECT_EQ(answered(u"Select Folder", u"", function, {u"", u"Select Folder"}), u"$$-128");
}

// A process outside the user's desktop, such as a service.
class HiddenWindowStation {
  public:
    HiddenWindowStation() : station_(CreateWindowStationW(nullptr, 0, WINSTA_ALL_ACCESS, nullptr)) {
        EXPECT_TRUE(SetProcessWindowStation(station_)) << GetLastError();
    }
    ~HiddenWindowStation() {
        SetProcessWindowStation(before_);
        CloseWindowStation(station_);
    }

  private:
    HWINSTA before_ = GetProcessWindowStation();
    HWINSTA station_;
};

std::atomic<DWORD> error_mode_of_call;

constexpr plugin::LicenceChecks noting_error_mode{
    .at_startup =
        [](bool) {
            return plugin::LicenceStart{true, false};
        },
    .within_time =
        [] {
            error_mode_of_call = GetThreadErrorMode();
            return true;
        },
    .state = [] { return ErrorCode::Ok; },
};

TEST_F(PluginWithFolder, NothingIsShownWhereNobodyCanBeAsked) {
    // Answers what is shown all the same, so that it fails the test instead of stopping it.
    std::atomic<int> shown = 0;
    const Watcher user([&, start = time_now()] {
        if (const HWND dialog = window_since(start, L"#32770")) {
            ++shown;
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
            Sleep(200);
        }
    });
    const std::u16string inside = folder.file(L"full\\a.txt", "");
    host::the_plugin().licence = &noting_error_mode;
    const auto expect_silence = [&](std::uint8_t type) {
        SCOPED_TRACE(int{type});
        start({.application_type = type});
        for (const char16_t* function :
             {u"VlFile_ContentsDialog", u"VlFile_SelectFileDialog", u"VlFile_SelectFolderDialog",
              u"VlFile_SaveFileDialog", u"VlFile_Launch", u"VlFile_Reveal"})
            EXPECT_EQ(call(function, {u"", path(L"none")}), u"$$-4251") << to_wide(function);
        EXPECT_EQ(call(u"VlFile_BringToFront", {}), u"$$-4251");
        EXPECT_EQ(
            call(u"VlFile_DeleteFolder", {u"-deleteAllSubFoldersAndAllContents", path(L"full")}),
            u"$$-1");
        EXPECT_TRUE(exists(inside));
        EXPECT_NE(error_mode_of_call & SEM_FAILCRITICALERRORS, 0u);
        host().preferences();
    };
    for (const int type : {3, 4, 5, 6, 7, 8, 9})
        expect_silence(static_cast<std::uint8_t>(type));
    {
        const HiddenWindowStation service;
        expect_silence(pro);
    }
    EXPECT_EQ(shown, 0);
}

} // namespace
} // namespace vell::test
