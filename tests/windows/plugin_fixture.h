// The plug-in, linked into the test program, behind the console's host.
#pragma once

#include "console/host/plugin_host.h"
#include "src/host/entry/the_plugin.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

extern "C" void FMExternCallProc(vell::host::CallRecord* record);

namespace vell::test {

using console::PluginHost;
using console::PluginHostOptions;
using console::Value;

inline constexpr auto delete_all = u"-deleteAllSubFoldersAndAllContents noWarning";

inline constexpr std::uint8_t pro = 1;
inline constexpr std::uint8_t server = 3;
inline constexpr std::uint8_t web_server = 4;

// What a test file holds, and its end with the test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    std::wstring path(std::wstring_view name = L"") const; // ends with "\" for an empty name

    // Make an item at a path of any length, and the folders above it; the path.
    std::u16string file(std::wstring_view name, std::string_view contents) const;
    std::u16string subfolder(std::wstring_view name) const;

  private:
    std::wstring folder_;
};

// The name of folders below one another whose path passes 260 characters, with "\" at its end.
inline const std::wstring deep_name = [] {
    std::wstring name;
    for (wchar_t c = L'a'; c < L'g'; ++c)
        name += std::wstring(50, c) + L"\\";
    return name;
}();

std::string read_file(const std::wstring& path);
bool exists(const std::u16string& path);
UniqueFile open_file(const std::u16string& path, DWORD access, DWORD share = 0); // is there already
// Whether nobody but this user, the system and administrators has rights.
bool is_private(const std::wstring& path);
void set_length(const UniqueFile& file, std::int64_t length); // without taking room on the disk

// A result's lines.
using Lines = std::vector<std::u16string>;
Lines lines_of(std::u16string_view text);
Lines sorted_lines(std::u16string_view text);

inline Value number(std::int64_t value) {
    return Value(console::Decimal(value));
}

std::wstring executable_folder(); // with "\" at its end

// Runs a program with other values of environment variables.
using Environment = std::map<std::wstring, std::wstring>;
UniqueHandle start_program(std::wstring command, const Environment& environment = {},
                           HANDLE output = nullptr);
DWORD exit_code(const UniqueHandle& process); // waits for the end

// Work in as many threads at once, each with its number.
void in_threads(std::size_t count, const std::function<void(std::size_t)>& work);

// Windows on the screen of a class and a title, each of them any when it is empty, that this
// process shows or, in the second form, one of those that it has started since a time. Other
// programs may show what they like meanwhile, and what an earlier test left may crash.
HWND own_window(const std::wstring& class_name, const std::wstring& title = L"");
HWND window_since(const FILETIME& time, const std::wstring& class_name);
FILETIME time_now();

// Looks at the screen every few milliseconds, on a thread of its own.
class Watcher {
  public:
    explicit Watcher(std::function<void()> look);
    ~Watcher();

  private:
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

// A window of a class for the life of the object; null where there is no display.
class TestWindow {
  public:
    explicit TestWindow(const wchar_t* class_name = L"vell test");
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow();
    HWND get() const { return window_; }

  private:
    const wchar_t* class_name_;
    HWND window_;
};

class Plugin : public ::testing::Test {
  public:
    static constexpr auto server_log = L"Vell Plugin FMServer.log";
    static constexpr auto web_log = L"Vell Plugin Web Engine.log";

  protected:
    Plugin();
    ~Plugin() override; // checks that no object of the host is left

    std::int64_t start(PluginHostOptions options = {});
    PluginHost& host() { return *host_; }

    // The result as text; "ERRCODE: …" when the body itself failed.
    std::u16string call(std::u16string_view function, std::vector<Value> arguments);
    std::u16string call_id(std::int16_t id, std::vector<Value> arguments);
    std::u16string step(std::u16string_view name, std::vector<Value> values);

    // What comes to the debug log during the work.
    std::string notes_of(const std::function<void()>& work);

    // Lines that came to a server's log since the last call or the start of the test, without their
    // time.
    std::vector<std::string> new_log_lines(const std::wstring& name = server_log);

  private:
    std::unique_ptr<PluginHost> host_;
    std::int64_t live_objects_;
    std::map<std::wstring, std::size_t> log_positions_;
};

// A plug-in that was started, and a folder to work in.
class PluginWithFolder : public Plugin {
  protected:
    PluginWithFolder() { start(); }
    std::u16string path(std::wstring_view name = L"") const { return to_utf16(folder.path(name)); }
    std::string contents(std::wstring_view name) const { return read_file(folder.path(name)); }

    TemporaryFolder folder;
};

} // namespace vell::test
