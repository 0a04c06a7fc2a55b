// The desktop over Windows' shell and its windows.
#include "src/system/desktop.h"
#include "src/base/ascii.h"
#include "src/windows/desktop/com.h"
#include "src/windows/desktop/file_dialog.h"
#include "src/windows/desktop/item_list.h"
#include "src/windows/desktop/shell_operations.h"
#include "src/windows/parts.h"
#include "src/windows/text.h"

#include <shellapi.h>

#include <array>

namespace vell::windows {

using namespace files;

namespace {

int show_command(WindowState window) {
    switch (window) {
    case WindowState::Hidden:
        return SW_HIDE;
    case WindowState::Minimized:
        return SW_SHOWMINIMIZED;
    case WindowState::Maximized:
        return SW_SHOWMAXIMIZED;
    default:
        return SW_SHOWNORMAL;
    }
}

// Null for an empty text.
const wchar_t* optional_wide(const std::u16string& text) {
    return text.empty() ? nullptr : as_wide(text);
}

// The number that the shell puts in the place of a program's handle tells of failures that leave no
// error behind.
ErrorCode launch_error(DWORD error, const SHELLEXECUTEINFOW& info) {
    const auto number = static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(info.hInstApp));
    if (error == ERROR_CANCELLED)
        return ErrorCode::Cancelled;
    if (number == SE_ERR_NOASSOC || number == SE_ERR_ASSOCINCOMPLETE)
        return static_cast<ErrorCode>(ERROR_NO_ASSOCIATION);
    if (error != ERROR_SUCCESS)
        return error_from_win32(static_cast<std::int32_t>(error));
    return number > 0 && number <= 32 ? error_from_win32(number) : ErrorCode::NotAvailable;
}

bool select_in_folder(const std::u16string& path) {
    PIDLIST_ABSOLUTE list = nullptr;
    if (FAILED(SHParseDisplayName(as_wide(path), nullptr, &list, 0, nullptr)))
        return false;
    const UniqueItemList item(list);
    return SUCCEEDED(SHOpenFolderAndSelectItems(item.get(), 0, nullptr, 0));
}

bool is_of_this_process(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId();
}

BOOL CALLBACK keep_first_own_window(HWND window, LPARAM found) {
    if (!is_of_this_process(window) || !IsWindowVisible(window) || GetWindow(window, GW_OWNER))
        return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

struct WindowSearch {
    std::u16string_view class_name;
    HWND found = nullptr;
};

BOOL CALLBACK keep_first_of_class(HWND window, LPARAM argument) {
    auto& search = *reinterpret_cast<WindowSearch*>(argument);
    std::array<wchar_t, 1000> name;
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    const std::u16string units = to_utf16({name.data(), static_cast<std::size_t>(length)});
    if (!starts_ignoring_case(std::u16string_view(units), search.class_name))
        return TRUE;
    search.found = window;
    return FALSE;
}

// What the user types into while it lives; another thread's may then be brought to the front.
class SharedInput {
  public:
    explicit SharedInput(DWORD thread) : thread_(thread) {
        const DWORD own = GetCurrentThreadId();
        attached_ = thread != 0 && thread != own && AttachThreadInput(own, thread, TRUE);
    }
    SharedInput(const SharedInput&) = delete;
    SharedInput& operator=(const SharedInput&) = delete;
    ~SharedInput() {
        if (attached_)
            AttachThreadInput(GetCurrentThreadId(), thread_, FALSE);
    }

  private:
    DWORD thread_;
    bool attached_;
};

class Win32Desktop : public Desktop {
  public:
    // Services and scheduled tasks have a window station of their own, whose windows nobody sees.
    bool is_visible() override {
        USEROBJECTFLAGS flags{};
        return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                         nullptr) &&
               (flags.dwFlags & WSF_VISIBLE) != 0;
    }

    void* main_window(std::u16string_view class_name) override {
        WindowSearch search{class_name};
        if (!class_name.empty())
            EnumWindows(keep_first_of_class, reinterpret_cast<LPARAM>(&search));
        return search.found ? search.found : GetForegroundWindow();
    }

    Result<void> launch(const LaunchRequest& request) override {
        const ComApartment apartment;
        SHELLEXECUTEINFOW info{};
        info.cbSize = sizeof info;
        // The thread may end, or wait, before the shell is done.
        info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
        info.hwnd = static_cast<HWND>(request.owner);
        info.lpVerb = optional_wide(request.verb);
        info.lpFile = as_wide(request.target);
        info.lpParameters = optional_wide(request.parameters);
        info.lpDirectory = optional_wide(request.working_folder);
        info.nShow = show_command(request.window);
        SetLastError(ERROR_SUCCESS);
        if (ShellExecuteExW(&info))
            return {};
        return Failure{launch_error(GetLastError(), info)};
    }

    Result<void> reveal(const std::u16string& path) override {
        const ComApartment apartment;
        if (select_in_folder(path))
            return {};
        std::array<wchar_t, MAX_PATH> folder{};
        if (GetWindowsDirectoryW(folder.data(), MAX_PATH) == 0)
            return Failure{last_error()};
        LaunchRequest explorer;
        explorer.target = to_utf16(folder.data()) + u"\\explorer.exe";
        explorer.parameters = u"/select,\"" + path + u'"';
        return launch(explorer);
    }

    Result<void> bring_to_front(void* main_window) override {
        auto window = static_cast<HWND>(main_window);
        if (!window || !is_of_this_process(window)) {
            window = nullptr;
            EnumWindows(keep_first_own_window, reinterpret_cast<LPARAM>(&window));
        }
        if (!window)
            return Failure{ErrorCode::NoFrontWindow};
        if (IsIconic(window))
            ShowWindow(window, SW_RESTORE);
        const HWND wanted = GetLastActivePopup(window); // a dialog, where one is open
        if (SetForegroundWindow(wanted) && GetForegroundWindow() == wanted)
            return {};
        // The system lets only the program in front hand over its place. One that hangs would keep
        // us waiting.
        const HWND in_front = GetForegroundWindow();
        if (in_front && !IsHungAppWindow(in_front)) {
            const SharedInput input(GetWindowThreadProcessId(in_front, nullptr));
            BringWindowToTop(wanted);
            SetForegroundWindow(wanted);
        }
        if (GetForegroundWindow() != wanted)
            return Failure{ErrorCode::Busy};
        return {};
    }

    Result<std::vector<std::u16string>> show(const FileDialog& dialog) override {
        return show_dialog(dialog);
    }

    bool confirm(void* owner, const std::u16string& question) override {
        MessageBeep(0);
        return MessageBoxW(static_cast<HWND>(owner), as_wide(question), L"",
                           MB_TASKMODAL | MB_ICONHAND | MB_OKCANCEL) == IDOK;
    }

    void inform(void* owner, const std::u16string& title, const std::u16string& text) override {
        MessageBoxW(static_cast<HWND>(owner), as_wide(text), as_wide(title),
                    MB_OK | MB_ICONINFORMATION);
    }

    Result<std::vector<std::u16string>> preferred_languages() override {
        ULONG count = 0;
        ULONG length = 0;
        if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, nullptr, &length))
            return Failure{last_error()};
        std::wstring names(length, L'\0');
        if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, names.data(), &length))
            return Failure{last_error()};
        std::vector<std::u16string> languages;
        for (const wchar_t* name = names.c_str(); *name; name += languages.back().size() + 1)
            languages.push_back(to_utf16(name));
        return languages;
    }

    bool has_shell_operations() override { return windows::has_shell_operations(); }
    ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                            ShellMessages messages) override {
        return windows::shell_copy(folder, target, messages);
    }
    ShellOutcome shell_delete(const NativePath& folder, void* owner,
                              ShellMessages messages) override {
        return windows::shell_delete(folder, owner, messages);
    }
};

} // namespace

Desktop& desktop() {
    static Win32Desktop instance;
    return instance;
}

} // namespace vell::windows
