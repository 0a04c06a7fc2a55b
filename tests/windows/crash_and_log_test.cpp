// The permanent log, and the end of a process whose function crashed.
#include "src/windows/process/crash_report.h"
#include "src/windows/process/log_file.h"
#include "tests/windows/plugin_fixture.h"

#include <filesystem>
#include <set>

namespace vell::test {
namespace {

TEST(LogFile, LinesAreCutWithTheirEndKept) {
    EXPECT_EQ(windows::log_line_text("2020-12-31 23:59:59", "me", "a\rb\r\nc"),
              "2020-12-31 23:59:59 [me] a\r\nb\r\nc\r\n");
    std::string umlauts;
    for (int i = 0; i < 1000; ++i)
        umlauts += "\xC3\xA4";
    for (const char* source : {"m", "me"}) { // the cut falls into a character for one of them
        const std::string cut = windows::log_line_text("2020-12-31 23:59:59", source, umlauts);
        EXPECT_LE(cut.size(), 1023u);
        EXPECT_TRUE(cut.ends_with("\xC3\xA4\r\n"));
    }
}

TEST_F(Plugin, AFullLogMakesPlaceForAnother) {
    start({.application_type = server});
    const std::wstring log = executable_folder() + L"Logs\\VellDebug.log";
    const std::wstring old = executable_folder() + L"Logs\\VellDebug (old).log";
    const auto remove_both = [&] {
        DeleteFileW(log.c_str());
        DeleteFileW(old.c_str());
    };
    const auto add_line = [&] {
        host::the_plugin().system.logs().append(windows::LogChannel::Debug,
                                                files::LogFolder::OfServer, "me", "text");
        return std::filesystem::file_size(log);
    };
    const auto grow_to = [&](std::uint64_t size) {
        set_length(open_file(to_utf16(log), GENERIC_WRITE), static_cast<std::int64_t>(size));
    };
    remove_both();
    const std::uint64_t line = add_line();
    grow_to(windows::log_size_limit - line);
    EXPECT_EQ(add_line(), windows::log_size_limit);
    EXPECT_EQ(add_line(), line);
    EXPECT_EQ(std::filesystem::file_size(old), windows::log_size_limit);
    grow_to(windows::log_size_limit - line + 1);
    {
        const UniqueFile reader =
            open_file(to_utf16(old), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(add_line(), windows::log_size_limit - line + 1); // the line is lost
    }
    EXPECT_EQ(add_line(), line);
    EXPECT_EQ(std::filesystem::file_size(old), windows::log_size_limit - line + 1);
    remove_both();
}

// vellhost, the plug-in and the stand-in library in a folder of their own, so that log and dump
// of the crash are found there.
void copy_host(const TemporaryFolder& folder) {
    for (const wchar_t* name : {L"vellhost.exe", L"VellFile.fmx64", L"FMWrapper.dll"})
        std::filesystem::copy_file(executable_folder() + name, folder.path(name));
}

UniqueHandle start_host(const TemporaryFolder& folder, std::wstring_view options) {
    return start_program(L"\"" + folder.path(L"vellhost.exe") + L"\" " + std::wstring(options) +
                             L" \"VlFile_Version( \\\"x\\\" )\"",
                         {{L"TEMP", folder.path()}, {L"TMP", folder.path()}});
}

DWORD run_crashing_host(const TemporaryFolder& folder, std::wstring_view application_type) {
    copy_host(folder);
    // Beside the program, where Windows looks first for a library without a folder; it has no
    // function that writes dumps.
    std::filesystem::copy_file(executable_folder() + L"FMWrapper.dll", folder.path(L"dbghelp.dll"));
    return exit_code(
        start_host(folder, L"--app-type " + std::wstring(application_type) + L" --fail-call 2:3"));
}

// Two processes fill the log at once: what was set aside is never replaced by a few new lines, and
// none of these is lost.
TEST(LogFile, AFullLogIsSetAsideOnce) {
    const TemporaryFolder folder;
    copy_host(folder);
    const std::wstring name = L"Logs\\Vell Plugin FMServer";
    constexpr std::size_t start =
        windows::log_size_limit - 300; // room for some lines of the banner
    set_length(open_file(folder.file(name + L".log", ""), GENERIC_WRITE),
               static_cast<std::int64_t>(start));
    UniqueHandle hosts[2];
    for (UniqueHandle& host : hosts)
        host = start_host(folder, L"--app-type 3");
    for (const UniqueHandle& host : hosts)
        EXPECT_EQ(exit_code(host), 0u);
    const std::string old = read_file(folder.path(name + L" (old).log"));
    ASSERT_GT(old.size(), start);
    EXPECT_LE(old.size(), windows::log_size_limit);
    const std::string lines = old.substr(start) + read_file(folder.path(name + L".log"));
    for (const std::string_view line :
         {"started running under FileMaker Server.\r\n", "Plug-in build number: 508\r\n",
          "External function called. functionID: 1\r\n", "Plug-in shutdown completed.\r\n"}) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = lines.find(line, at)) != lines.npos; ++at)
            ++count;
        EXPECT_EQ(count, std::size(hosts)) << line;
    }
}

std::filesystem::path dump_in(const TemporaryFolder& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        if (entry.path().extension() == L".dmp")
            return entry.path();
    return {};
}

TEST(CrashReport, ACrashLeavesADumpAndLogLinesAndEndsTheProcess) {
    std::set<std::wstring> names;                       // what nobody can know beforehand of them
    for (const auto* application_type : {L"1", L"3"}) { // desktop and server
        const TemporaryFolder folder;
        EXPECT_EQ(run_crashing_host(folder, application_type), 1u);
        const std::filesystem::path dump_file = dump_in(folder);
        EXPECT_TRUE(is_private(dump_file.wstring()));
        constexpr std::size_t random_length =
            std::string_view("xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx").size();
        const std::wstring name = dump_file.stem().wstring();
        ASSERT_GT(name.size(), random_length);
        names.insert(name.substr(name.size() - random_length));
        const std::string dump = read_file(dump_file.wstring());
        EXPECT_TRUE(dump.starts_with("MDMP"));
        EXPECT_GT(dump.size(), 1000u);
        const std::string log = read_file(folder.path(L"Logs\\Vell Plugin FMServer.log"));
        std::size_t at = 0;
        for (const char* line :
             {"Exception raised. code = 3221225477\r\n",
              "Created crash dumpfile: ", "**** FATAL ERROR: EXIT PROCESS ****\r\n"}) {
            at = log.find(line, at);
            EXPECT_EQ(at == log.npos, *application_type == L'1') << log;
        }
        EXPECT_FALSE(std::filesystem::exists(folder.path(L"Vell Logs")));
    }
    EXPECT_EQ(names.size(), 2u);
}

} // namespace
} // namespace vell::test
