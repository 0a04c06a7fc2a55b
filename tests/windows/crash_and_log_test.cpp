// The permanent log, and the end of a process whose function crashed.
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "src/host/crash_report.h"
#include "src/host/log_file.h"
#include "tests/windows/plugin_fixture.h"

#include <filesystem>
#include <thread>

namespace vell::test {
namespace {

TEST(LogFile, NamesFollowTheChannel) {
    using host::LogChannel;
    EXPECT_EQ(host::log_file_name(LogChannel::Server), L"Vell Plugin FMServer.log");
    EXPECT_EQ(host::log_file_name(LogChannel::Web), L"Vell Plugin Web Engine.log");
    EXPECT_EQ(host::log_file_name(LogChannel::Debug), L"VellDebug.log");
    EXPECT_EQ(host::log_file_name(static_cast<LogChannel>(7)), L"Vell Plugin FMServer.log");
    EXPECT_EQ(host::log_folder(L"C:\\Host\\host.exe", true), L"C:\\Host\\Logs\\");
    EXPECT_EQ(host::log_folder(L"C:\\Host\\host.exe", false), L"C:\\Host\\Vell Logs\\");
    EXPECT_EQ(host::log_folder(L"host.exe", false), L"");
}

TEST(LogFile, LinesAreCutWithTheirEndKept) {
    EXPECT_EQ(host::log_line_text("2020-12-31 23:59:59", "me", "a\rb\r\nc"),
              "2020-12-31 23:59:59 [me] a\r\nb\r\nc\r\n");
    const std::string line =
        host::log_line_text("2020-12-31 23:59:59", "me", std::string(2000, 'x'));
    EXPECT_EQ(line.size(), 1023u);
    EXPECT_TRUE(line.ends_with("xx\r\n"));
    std::string umlauts;
    for (int i = 0; i < 1000; ++i)
        umlauts += "\xC3\xA4";
    for (const char* source : {"m", "me"}) { // the cut falls into a character for one of them
        const std::string cut = host::log_line_text("2020-12-31 23:59:59", source, umlauts);
        EXPECT_LE(cut.size(), 1023u);
        EXPECT_TRUE(cut.ends_with("\xC3\xA4\r\n"));
    }
}

TEST_F(Plugin, LinesOfManyThreadsAreWhole) {
    start({.application_type = server});
    new_log_lines();
    std::vector<std::thread> threads;
    for (char c = 'a'; c < 'i'; ++c)
        threads.emplace_back([c] {
            for (int i = 0; i < 50; ++i)
                host::log_line(std::string(900, c));
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::vector<std::string> lines = new_log_lines();
    EXPECT_EQ(lines.size(), 400u);
    for (const std::string& line : lines)
        EXPECT_EQ(line, "[Vell File Plug-In] " + std::string(900, line.back()));
}

TEST(CrashReport, DumpsAreNamedByTimeAndThread) {
    EXPECT_EQ(host::crash_dump_name(L"C:\\T\\", {2020, 12, 4, 31, 3, 4, 5, 0}, 77, 88),
              L"C:\\T\\Crashdump Vell File Plug-In v14.0-20201231-030405-77-88.dmp");
}

// vellhost, the plug-in and the stand-in library in a folder of their own, so that log and dump
// of the crash are found there.
DWORD run_crashing_host(const TemporaryFolder& folder, std::wstring_view application_type) {
    wchar_t own_path[MAX_PATH];
    GetModuleFileNameW(nullptr, own_path, MAX_PATH);
    const std::filesystem::path programs = std::filesystem::path(own_path).parent_path();
    for (const wchar_t* name : {L"vellhost.exe", L"VellFile.fmx64", L"FMWrapper.dll"})
        std::filesystem::copy_file(programs / name, folder.path(name),
                                   std::filesystem::copy_options::overwrite_existing);
    std::wstring command = L"\"" + folder.path(L"vellhost.exe") + L"\" --app-type " +
                           std::wstring(application_type) +
                           L" --fail-call 2:3 \"VlFile_Version( \\\"x\\\" )\"";
    wchar_t old_temp[MAX_PATH];
    GetEnvironmentVariableW(L"TEMP", old_temp, MAX_PATH);
    for (const wchar_t* variable : {L"TEMP", L"TMP"})
        SetEnvironmentVariableW(variable, folder.path().c_str());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE,
                                        CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process);
    for (const wchar_t* variable : {L"TEMP", L"TMP"})
        SetEnvironmentVariableW(variable, old_temp);
    EXPECT_TRUE(started) << GetLastError();
    const UniqueHandle handle(process.hProcess);
    const UniqueHandle thread(process.hThread);
    WaitForSingleObject(handle.get(), 60'000);
    DWORD exit_code = 0;
    GetExitCodeProcess(handle.get(), &exit_code);
    return exit_code;
}

std::string dump_in(const TemporaryFolder& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        if (entry.path().extension() == L".dmp")
            return read_file(entry.path().wstring());
    return {};
}

TEST(CrashReport, ACrashLeavesADumpAndLogLinesAndEndsTheProcess) {
    const TemporaryFolder folder;
    EXPECT_EQ(run_crashing_host(folder, L"3"), 1u);
    const std::string dump = dump_in(folder);
    EXPECT_TRUE(dump.starts_with("MDMP"));
    EXPECT_GT(dump.size(), 1000u);

    const std::string log = read_file(folder.path(L"Logs\\Vell Plugin FMServer.log"));
    const std::size_t raised = log.find("Exception raised. code = 3221225477\r\n");
    const std::size_t created = log.find("Created crash dumpfile: ");
    const std::size_t ended = log.find("**** FATAL ERROR: EXIT PROCESS ****\r\n");
    EXPECT_NE(raised, std::string::npos) << log;
    EXPECT_NE(ended, std::string::npos);
    EXPECT_LT(raised, created);
    EXPECT_LT(created, ended);
}

TEST(CrashReport, OnADesktopHostOnlyTheDumpIsLeft) {
    const TemporaryFolder folder;
    EXPECT_EQ(run_crashing_host(folder, L"1"), 1u);
    EXPECT_TRUE(dump_in(folder).starts_with("MDMP"));
    EXPECT_FALSE(std::filesystem::exists(folder.path(L"Logs")));
    EXPECT_FALSE(std::filesystem::exists(folder.path(L"Vell Logs")));
}

} // namespace
} // namespace vell::test
