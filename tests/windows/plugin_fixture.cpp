#include "tests/windows/plugin_fixture.h"

#include "src/host/entry/dispatcher.h"
#include "src/host/entry/the_plugin.h"

#include <tlhelp32.h>
#include <winioctl.h>

#include <algorithm>
#include <filesystem>

namespace vell::test {
namespace {

std::wstring log_path(std::wstring_view name) {
    return executable_folder() + L"Logs\\" + std::wstring(name);
}

// Logs of earlier runs are no part of this one.
[[maybe_unused]] const bool old_logs_deleted = [] {
    DeleteFileW(log_path(Plugin::server_log).c_str());
    DeleteFileW(log_path(Plugin::web_log).c_str());
    return true;
}();

struct WindowSearch {
    std::wstring class_name;
    std::wstring title;
    std::function<bool(DWORD)> takes_process;
    HWND found = nullptr;

    static BOOL CALLBACK look_at(HWND window, LPARAM argument) {
        auto& search = *reinterpret_cast<WindowSearch*>(argument);
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        wchar_t name[200] = L"";
        wchar_t title[200] = L"";
        GetClassNameW(window, name, 200);
        InternalGetWindowText(window, title, 200); // waits for nobody, as GetWindowText would
        if ((search.class_name.empty() || search.class_name == name) &&
            (search.title.empty() || search.title == title) && search.takes_process(process))
            search.found = window;
        return search.found == nullptr;
    }
    HWND run() {
        EnumWindows(look_at, reinterpret_cast<LPARAM>(this));
        return found;
    }
};

bool has_started_since(const FILETIME& time, DWORD process) {
    const UniqueHandle handle(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    FILETIME started{}, others{};
    GetProcessTimes(handle.get(), &started, &others, &others, &others);
    return CompareFileTime(&started, &time) >= 0;
}

DWORD starter_of(DWORD process) {
    const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL is_one = Process32FirstW(snapshot.get(), &entry); is_one;
         is_one = Process32NextW(snapshot.get(), &entry))
        if (entry.th32ProcessID == process)
            return entry.th32ParentProcessID;
    return 0;
}

std::wstring long_form(const std::wstring& path) {
    return L"\\\\?\\" + path;
}

} // namespace

std::wstring executable_folder() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.rfind(L'\\') + 1);
}

TemporaryFolder::TemporaryFolder() {
    wchar_t temporary[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temporary);
    // Process IDs come again: a name that an ended process left is passed over.
    for (int i = 0;; ++i) {
        folder_ = std::wstring(temporary) + L"vell_test_" + std::to_wstring(GetCurrentProcessId()) +
                  L"_" + std::to_wstring(i) + L"\\";
        if (CreateDirectoryW(folder_.c_str(), nullptr) || GetLastError() != ERROR_ALREADY_EXISTS)
            return;
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(long_form(folder_), ignored); // long paths too
}

std::wstring TemporaryFolder::path(std::wstring_view name) const {
    return folder_ + std::wstring(name);
}

std::u16string TemporaryFolder::file(std::wstring_view name, std::string_view contents) const {
    if (const std::size_t end = name.rfind(L'\\'); end != name.npos)
        subfolder(name.substr(0, end));
    const UniqueFile handle(CreateFileW(long_form(path(name)).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD done = 0;
    EXPECT_TRUE(handle) << GetLastError();
    EXPECT_TRUE(WriteFile(handle.get(), contents.data(), static_cast<DWORD>(contents.size()), &done,
                          nullptr));
    return to_utf16(path(name));
}

std::u16string TemporaryFolder::subfolder(std::wstring_view name) const {
    const std::wstring whole = long_form(path(name));
    for (std::size_t end = long_form(folder_).size(); end != whole.npos;) {
        end = whole.find(L'\\', end + 1);
        EXPECT_TRUE(CreateDirectoryW(whole.substr(0, end).c_str(), nullptr) ||
                    GetLastError() == ERROR_ALREADY_EXISTS)
            << GetLastError();
    }
    return to_utf16(path(name));
}

std::string read_file(const std::wstring& path) {
    const UniqueFile handle =
        open_file(to_utf16(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    if (!handle)
        return {};
    std::string bytes(GetFileSize(handle.get(), nullptr), '\0');
    DWORD done = 0;
    ReadFile(handle.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr);
    bytes.resize(done);
    return bytes;
}

bool exists(const std::u16string& path) {
    return GetFileAttributesW(as_wide(path)) != INVALID_FILE_ATTRIBUTES;
}

UniqueFile open_file(const std::u16string& path, DWORD access, DWORD share) {
    return UniqueFile(CreateFileW(as_wide(path), access, share, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

void set_length(const UniqueFile& file, std::int64_t length) {
    DWORD done = 0;
    DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
    LARGE_INTEGER end;
    end.QuadPart = length;
    ASSERT_TRUE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(file.get()));
}

Lines lines_of(std::u16string_view text) {
    Lines lines(1);
    for (const char16_t c : text) {
        if (c == u'\r')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    return lines;
}

Lines sorted_lines(std::u16string_view text) {
    Lines lines = lines_of(text);
    std::ranges::sort(lines);
    return lines;
}

UniqueHandle start_program(std::wstring command, const Environment& environment, HANDLE output) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (output) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = output;
    }
    Environment before;
    for (const auto& [variable, value] : environment) {
        wchar_t old[1000] = L"";
        GetEnvironmentVariableW(variable.c_str(), old, 1000);
        before[variable] = old;
        SetEnvironmentVariableW(variable.c_str(), value.c_str());
    }
    PROCESS_INFORMATION started{};
    EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, output != nullptr,
                               CREATE_NO_WINDOW, nullptr, nullptr, &startup, &started))
        << GetLastError();
    for (const auto& [variable, value] : before)
        SetEnvironmentVariableW(variable.c_str(), value.c_str());
    CloseHandle(started.hThread);
    return UniqueHandle(started.hProcess);
}

DWORD exit_code(const UniqueHandle& process) {
    WaitForSingleObject(process.get(), 300'000);
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    return code;
}

bool is_private(const std::wstring& path) {
    DWORD size = 0;
    GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION | OWNER_SECURITY_INFORMATION, nullptr,
                     0, &size);
    std::vector<char> descriptor(size);
    ACL* rights = nullptr;
    PSID owner = nullptr;
    BOOL is_there = FALSE;
    BOOL unused = FALSE;
    if (!GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION | OWNER_SECURITY_INFORMATION,
                          descriptor.data(), size, &size) ||
        !GetSecurityDescriptorOwner(descriptor.data(), &owner, &unused) ||
        !GetSecurityDescriptorDacl(descriptor.data(), &is_there, &rights, &unused) || !rights)
        return false;
    for (DWORD i = 0; i < rights->AceCount; ++i) {
        void* found = nullptr;
        if (!GetAce(rights, i, &found))
            return false;
        PSID who = &static_cast<ACCESS_ALLOWED_ACE*>(found)->SidStart;
        if (!EqualSid(who, owner) && !IsWellKnownSid(who, WinLocalSystemSid) &&
            !IsWellKnownSid(who, WinBuiltinAdministratorsSid))
            return false;
    }
    return true;
}

void in_threads(std::size_t count, const std::function<void(std::size_t)>& work) {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

HWND own_window(const std::wstring& class_name, const std::wstring& title) {
    return WindowSearch{class_name, title,
                        [](DWORD process) {
                            return process == GetCurrentProcessId();
                        }}
        .run();
}

HWND window_since(const FILETIME& time, const std::wstring& class_name) {
    return WindowSearch{class_name, L"",
                        [&](DWORD process) {
                            while (process != GetCurrentProcessId() && process != 0 &&
                                   has_started_since(time, process))
                                process = starter_of(process);
                            return process == GetCurrentProcessId();
                        }}
        .run();
}

FILETIME time_now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return time;
}

Watcher::Watcher(std::function<void()> look)
    : thread_([this, look = std::move(look)] {
          for (; !done_; Sleep(10))
              look();
      }) {}

Watcher::~Watcher() {
    done_ = true;
    thread_.join();
}

TestWindow::TestWindow(const wchar_t* class_name) : class_name_(class_name) {
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = DefWindowProcW;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.lpszClassName = class_name;
    RegisterClassW(&window_class);
    window_ = CreateWindowW(class_name, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100,
                            nullptr, nullptr, window_class.hInstance, nullptr);
}

TestWindow::~TestWindow() {
    DestroyWindow(window_);
    UnregisterClassW(class_name_, GetModuleHandleW(nullptr));
}

Plugin::Plugin() : live_objects_(StandIn_TotalLiveObjects()) {
    for (const wchar_t* name : {server_log, web_log})
        log_positions_[name] = read_file(log_path(name)).size();
}

Plugin::~Plugin() {
    host_.reset();
    host::the_plugin().licence = &plugin::own_licence_checks;
    StandIn_Reset();
    EXPECT_EQ(StandIn_TotalLiveObjects(), live_objects_);
}

std::int64_t Plugin::start(PluginHostOptions options) {
    host_.reset();
    host_ = std::make_unique<PluginHost>(options);
    host_->attach(FMExternCallProc, GetModuleHandleW(nullptr));
    return host_->start_up();
}

std::u16string Plugin::call(std::u16string_view function, std::vector<Value> arguments) {
    for (const console::RegisteredFunction& candidate : host_->functions())
        if (candidate.name == function &&
            static_cast<std::size_t>(candidate.min_arguments) <= arguments.size() &&
            static_cast<std::size_t>(candidate.max_arguments) >= arguments.size())
            return call_id(candidate.id, std::move(arguments));
    return u"NOT REGISTERED";
}

std::u16string Plugin::call_id(std::int16_t id, std::vector<Value> arguments) {
    const auto result = host_->call_body(id, host::dispatch, arguments);
    if (!result)
        return u"ERRCODE: " + std::u16string(result.error().begin(), result.error().end());
    return console::to_value(result->get()).as_text();
}

std::u16string Plugin::step(std::u16string_view name, std::vector<Value> values) {
    std::vector<console::StepArgument> arguments;
    for (Value& value : values)
        arguments.push_back({std::move(value)});
    const auto result = host_->run_step(*host_->find_step(name), arguments);
    return result ? result->as_text() : u"NOT RUN";
}

std::string Plugin::notes_of(const std::function<void()>& work) {
    call(u"VlFile_Control", {u"-AddToDebugLog=true"});
    host::the_plugin().debug_log.take();
    work();
    const std::string notes = host::the_plugin().debug_log.take();
    call(u"VlFile_Control", {u"-AddToDebugLog=false"});
    host::the_plugin().debug_log.take();
    return notes;
}

std::vector<std::string> Plugin::new_log_lines(const std::wstring& name) {
    const std::string log = read_file(log_path(name));
    std::vector<std::string> lines;
    std::size_t position = log_positions_[name];
    for (std::size_t end; (end = log.find("\r\n", position)) != std::string::npos;) {
        constexpr std::size_t time_length = std::string_view("2020-12-31 23:59:59 ").size();
        lines.push_back(log.substr(position + time_length, end - position - time_length));
        position = end + 2;
    }
    EXPECT_EQ(position, log.size()) << "a line without an end";
    log_positions_[name] = log.size();
    return lines;
}

} // namespace vell::test
