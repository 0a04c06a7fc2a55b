// Start-up, messages and shutdown, as a host of each kind and version sees them.
#include "src/files/paths/defaults.h"
#include "src/host/diagnostics/debug_log.h"
#include "src/host/lifecycle/main_window.h"
#include "src/host/vocabulary/registry.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>

namespace vell::test {
namespace {

using host::plugin_state;
using LogLines = std::vector<std::string>;

constexpr std::string_view source = "[Vell File Plug-In] ";

LogLines sourced(std::vector<std::string> texts) {
    for (std::string& text : texts)
        text.insert(0, source);
    return texts;
}

class Lifecycle : public Plugin {};

TEST_F(Lifecycle, EachApiVersionGetsWhatItsHostHas) {
    struct Case {
        std::int16_t api_version;
        std::int64_t answer;
        bool descriptions;
        bool steps;
    };
    const std::size_t functions = host::function_rows().size();
    for (const Case& c :
         {Case{49, -1, false, false}, Case{50, 59, false, false}, Case{55, 59, false, false},
          Case{56, 59, true, false}, Case{57, 59, true, true}, Case{255, 59, true, true},
          Case{256, -1, false, false}, Case{-1, -1, false, false}}) {
        SCOPED_TRACE(c.api_version);
        EXPECT_EQ(start({.api_version = c.api_version}), c.answer);
        EXPECT_EQ(host().functions().size(), c.answer == 59 ? functions : 0);
        EXPECT_EQ(host().steps().size(), c.steps ? host::step_rows().size() : 0);
        EXPECT_TRUE(host().definition_errors().empty());
        for (const console::RegisteredFunction& function : host().functions())
            EXPECT_EQ(function.description.empty(), !c.descriptions);
        EXPECT_EQ(plugin_state().registered_functions, static_cast<int>(host().functions().size()));
        host().shut_down();
        EXPECT_EQ(StandIn_FunctionCount(), 0u);
        EXPECT_EQ(StandIn_StepCount(), 0u);
        EXPECT_EQ(plugin_state().registered_functions, 0);
    }
}

TEST_F(Lifecycle, RegistrationsCarryWhatUsersSee) {
    start();
    const auto* version = host().find_function(std::int16_t{0});
    ASSERT_TRUE(version);
    EXPECT_EQ(version->prototype, u"VlFile_Version");
    EXPECT_EQ(version->max_arguments, 0);
    EXPECT_EQ(host().find_function(std::int16_t{1})->prototype, u"VlFile_Version( switches )");
    EXPECT_FALSE(host().find_function(std::int16_t{9000}));

    const auto* size = host().find_function(u"VlFile_GetDataSize");
    EXPECT_EQ(size->description, u"VlFile Get Data Size GetDataSize|Returns the size of the data "
                                 u"for the file specified by the filePath.");
    EXPECT_EQ(size->flags, 0xff00u);
    EXPECT_EQ(host().find_function(u"VlFile_ContentsDialog")->flags, 0xe900u);
    EXPECT_TRUE(host()
                    .find_function(u"VlFile_ConvertFromFMText")
                    ->description.starts_with(u"VlFile Convert From FM Text|"));
    EXPECT_EQ(host().functions().back().id, 4305);
    for (const auto& function : host().functions())
        EXPECT_EQ(function.plugin_id, "V7fi");

    const auto* zip = host().find_step(u"UnZip");
    ASSERT_TRUE(zip);
    EXPECT_EQ(zip->id, 7304);
    EXPECT_EQ(zip->flags, 0xFF6Eu);
    EXPECT_EQ(zip->xml,
              u"<PluginStep>"
              u"<Parameter Type=\"target\" DataType=\"text\" ShowInLine=\"true\" Label=\"Result "
              u"(error)\"/>"
              u"<Parameter Type=\"calc\" DataType=\"text\" ShowInLine=\"true\" Label=\"Zip "
              u"filePath\" ID=\"1\"/>"
              u"<Parameter Type=\"calc\" DataType=\"text\" ShowInLine=\"true\" Label=\"Destination "
              u"folderPath\" ID=\"2\"/>"
              u"<Parameter Type=\"bool\" ShowInLine=\"true\" Label=\"Don't create archive folder\" "
              u"ID=\"3\" Default=\"false\"/>"
              u"<Parameter Type=\"bool\" ShowInLine=\"true\" Label=\"Overwrite Existing items\" "
              u"ID=\"4\" Default=\"false\"/>"
              u"<Parameter Type=\"calc\" DataType=\"number\" ShowInLine=\"true\" Label=\"Timeout "
              u"(secs; optional)\" ID=\"5\"/>"
              u"</PluginStep>");
    EXPECT_TRUE(host().find_step(u"Copy File")->description.starts_with(u"|"));
}

TEST_F(Lifecycle, ServerHostsGetABannerAndCallLines) {
    start({.application_type = server});
    EXPECT_EQ(new_log_lines(),
              sourced({std::string(41, '*'),
                       "Vell File Plug-In 14.0 started running under FileMaker Server.",
                       "Running as a 64 bit Plug-in.", "Internal FM App version: 67",
                       "Plug-in build number: 508", "Plug-in startup completed."}));
    call(u"VlFile_VersionAutoUpdate", {});
    host().session_shutdown(5);
    host().file_shutdown(5, 9);
    host().shut_down();
    EXPECT_EQ(new_log_lines(),
              sourced({"External function called. functionID: 9002",
                       "External function end. functionID: 9002",
                       "Session shutdown completed. (sessionID = 5)",
                       "File shutdown completed. (sessionID = 5 fileID = 9)",
                       "Plug-in shutdown started.", "Plug-in shutdown completed."}));
}

TEST_F(Lifecycle, CallLinesAreSwitchedOffAndOn) {
    start({.application_type = server});
    const auto lines_of = [&](const char16_t* switches) {
        EXPECT_EQ(call(u"VlFile_Control", {switches}), u"0");
        call(u"VlFile_VersionAutoUpdate", {});
        return new_log_lines();
    };
    new_log_lines();
    const LogLines control = sourced(
        {"External function called. functionID: 4203", "External function end. functionID: 4203"});
    const LogLines version = sourced(
        {"External function called. functionID: 9002", "External function end. functionID: 9002"});
    EXPECT_EQ(lines_of(u"-LogCalls=false"), control); // its own pair is whole
    EXPECT_EQ(lines_of(u"-LogCalls=false"), LogLines());
    host().session_shutdown(5);
    EXPECT_EQ(new_log_lines(), sourced({"Session shutdown completed. (sessionID = 5)"}));
    EXPECT_EQ(lines_of(u"-LogCalls=true"), version);
}

TEST_F(Lifecycle, AReloadedPluginIsAsNew) {
    const TemporaryFolder folder;
    const std::u16string file = folder.file(L"a.txt", "");
    start({.application_type = server});
    EXPECT_EQ(call(u"VlFile_SetDefaultFileSpec", {u"", file}), u"0");
    EXPECT_EQ(call(u"VlFile_SetDefaultType", {u"", u"txt"}), u"0");
    EXPECT_EQ(call(u"VlFile_SetDefaultCreator", {u"", u"ttxt"}), u"0");
    EXPECT_EQ(call(u"VlFile_SetContents", {u"", u"o"}), u"0");
    EXPECT_EQ(call(u"VlFile_AppendContents", {u"", u"ld"}), u"0");
    EXPECT_EQ(call(u"VlFile_Control", {u"-AddToDebugLog=true -LogCalls=false"}), u"0");
    EXPECT_EQ(call(u"VlFile_Control", {u"DisableAllFunctions", u"forgotten"}), u"0");
    host().shut_down();
    host().start_up();
    new_log_lines();
    EXPECT_EQ(call(u"VlFile_Control", {u"CurrentEnabledStatus"}), u"1");
    EXPECT_EQ(new_log_lines().size(), 2u);
    EXPECT_EQ(call(u"VlFile_Control", {u"EnableAllFunctions", u"forgotten"}), u"$$-4218");
    EXPECT_NE(call(u"VlFile_SetContents", {u"", u"new"}), u"0");
    EXPECT_EQ(read_file(folder.path(L"a.txt")), "old");
    EXPECT_EQ(files::default_file_types(), u"");
    EXPECT_FALSE(host::debug_log().is_on());
    EXPECT_EQ(call(u"VlFile_Control", {u"-GetAndClearDebugLog"}), u"");
}

TEST_F(Lifecycle, OtherHostsLogNothing) {
    for (const int type : {0, 1, 2, 5, 6, 8, 9, 200}) {
        SCOPED_TRACE(type);
        start({.application_type = static_cast<std::uint8_t>(type)});
        EXPECT_EQ(call(u"VlFile_VersionAutoUpdate", {}), u"14000000");
        host().session_shutdown(1);
        host().file_shutdown(1, 2);
        host().shut_down();
    }
    EXPECT_TRUE(new_log_lines().empty());
}

TEST_F(Lifecycle, EveryServerHasItsLogAndABadVersionItsBanner) {
    EXPECT_EQ(start({.application_type = server_sase, .api_version = 49}), -1);
    EXPECT_EQ(start({.application_type = web_server}), 59);
    host().shut_down();
    for (const auto& [log, size, name] : {std::tuple(server_log, 5u, "FileMaker Server (SASE)."),
                                          {web_log, 8u, "FileMaker Web server."}}) {
        const LogLines lines = new_log_lines(log);
        ASSERT_EQ(lines.size(), size);
        EXPECT_NE(lines[1].find(name), std::string::npos);
    }
}

TEST_F(Lifecycle, AFailedLicenceCheckLoadsWithoutFunctions) {
    static constexpr host::LicenceChecks failing{
        .at_startup =
            [](bool) {
                return host::LicenceStart{false, false};
            },
        .within_time = [] { return true; },
        .state = [] { return ErrorCode::Ok; },
    };
    host::replace_licence_checks(&failing);
    EXPECT_EQ(start({.application_type = server}), 59);
    EXPECT_TRUE(host().functions().empty());
    EXPECT_TRUE(host().steps().empty());
    EXPECT_EQ(new_log_lines().back(), std::string(source) + "Startup phase failed");
    host().shut_down();
    EXPECT_TRUE(new_log_lines().empty());
}

TEST_F(Lifecycle, AFailedRegistrationEndsItsGroup) {
    const std::size_t all = host::function_rows().size();
    constexpr std::size_t second_group = 5;
    struct Case {
        std::uint32_t failing; // n-th registration
        std::size_t functions;
        std::size_t steps;
        std::string id;
    };
    const std::size_t steps = host::step_rows().size();
    for (const Case& c : {Case{4, 3 + second_group, steps, "4201"},
                          Case{static_cast<std::uint32_t>(all), all - 1, steps, "4305"},
                          Case{static_cast<std::uint32_t>(all + 3), all, 2, "7203"}}) {
        SCOPED_TRACE(c.failing);
        host::debug_log().take();
        StandIn_FailRegistration(c.failing, 777);
        EXPECT_EQ(start({.application_type = server}), 59);
        EXPECT_EQ(host().functions().size(), c.functions);
        EXPECT_EQ(host().steps().size(), c.steps);
        EXPECT_EQ(host::debug_log().take(),
                  "VlRegExternalFunc: Error with function ID= " + c.id + "\r");
        const LogLines lines = new_log_lines();
        EXPECT_EQ(lines[lines.size() - 2],
                  std::string(source) + "Vell File Plug-In: startup problem, errorcode = 777");
        StandIn_Reset();
    }
}

TEST_F(Lifecycle, ShutdownTellsWhatItCouldNotTakeBack) {
    start({.application_type = server});
    new_log_lines();
    StandIn_FailUnregistration(3, 888);
    host().shut_down();
    EXPECT_EQ(new_log_lines(),
              sourced({"Plug-in shutdown started.", "Plug-in shutdown error. Errorcode = 888",
                       "Plug-in shutdown PROBLEM: count of unregistered functions incorrect: " +
                           std::to_string(host::function_rows().size() - 1)}));
}

TEST_F(Lifecycle, StringQueriesFillTheBufferAndNoMore) {
    start();
    EXPECT_EQ(host().string_query(128), u"Vell File Plug-In");
    EXPECT_EQ(host().string_query(131), u"V7fi1YnYYnn");
    EXPECT_EQ(host().string_query(130), u"");
    EXPECT_EQ(host().string_query(0), u"");
    EXPECT_TRUE(host().string_query(129).starts_with(
        u"Vell File Plug-In 14.0. This plug-in (for FileMaker 16 to 19.5) adds steps and functions "
        u"for file and folder manipulation. \r"));
    EXPECT_TRUE(host().string_query(132).starts_with(u"https://"));
    for (std::size_t capacity = 1; capacity <= 18; ++capacity)
        EXPECT_EQ(host().string_query(128, capacity),
                  std::u16string(u"Vell File Plug-In").substr(0, capacity - 1));
}

TEST_F(Lifecycle, OddRecordsAreIgnored) {
    FMExternCallProc(nullptr);
    start();
    for (const int message : {2, 3, 6, 10, 255}) {
        host::CallRecord record{};
        record.message = static_cast<std::uint8_t>(message);
        record.result = 42;
        FMExternCallProc(&record);
        EXPECT_EQ(record.result, 42u);
    }
    char16_t buffer = u'x';
    for (const bool without_room : {false, true}) { // otherwise without a buffer
        host::CallRecord record{};
        record.message = 7;
        record.parameter1 = 128;
        record.parameter3 = without_room ? 0 : 10;
        record.result = without_room ? reinterpret_cast<fm::PtrType>(&buffer) : 0;
        FMExternCallProc(&record);
    }
    EXPECT_EQ(buffer, u'x');
    EXPECT_TRUE(plugin_state().idle_enabled);
    host().idle(0);
    host().idle(9);
    host().shut_down();
    EXPECT_FALSE(plugin_state().idle_enabled);
}

TEST(HostVersion, IsOneNumber) {
    EXPECT_EQ(host::host_version_number(u"Pro 19.5.1"), 19501);
    EXPECT_EQ(host::host_version_number(u"Pro 13.0v2"), 13002);
    EXPECT_EQ(host::host_version_number(u"ProAdvanced 16"), 16000);
    EXPECT_EQ(host::host_version_number(u"Server 19.10.2"), 19999);
    EXPECT_EQ(host::host_version_number(u"Pro 99999999999999.99999999999.9"), 999999);
    EXPECT_EQ(host::host_version_number(u""), 0);
}

TEST(MainWindow, ClassFollowsTheApiVersion) {
    const std::map<std::int16_t, std::wstring> numbers{{57, L"16"}, {58, L"xx"}, {59, L"17"},
                                                       {60, L"18"}, {62, L"19"}, {67, L"xx"}};
    for (const auto& [version, number] : numbers)
        EXPECT_EQ(host::main_window_class(version), L"FMPRO" + number + L".0APP");
    EXPECT_EQ(host::main_window_class(56), L"");
    EXPECT_TRUE(host::is_main_window_class(L"fmpro16.0appWindow", L"FMPRO16.0APP"));
    EXPECT_FALSE(host::is_main_window_class(L"FMPRO16.0AP", L"FMPRO16.0APP"));
    EXPECT_FALSE(host::is_main_window_class(L"xFMPRO16.0APP", L"FMPRO16.0APP"));
}

TEST_F(Lifecycle, FindsTheMainWindowAndOwnsTheAboutBoxByIt) {
    const TestWindow main(L"FMPROxx.0APP.main");
    const TestWindow other(L"FMPRO19.0APP");
    if (!main.get() || !other.get())
        GTEST_SKIP() << "no display";
    start({.api_version = 67});
    EXPECT_EQ(host::main_window(), main.get());
    start({.api_version = 62});
    EXPECT_EQ(host::main_window(), other.get());

    HWND owner = nullptr;
    {
        const Watcher user([&] {
            if (const HWND box = own_window(L"", L"About Vell File Plug-In")) {
                owner = GetWindow(box, GW_OWNER);
                PostMessageW(box, WM_COMMAND, IDOK, 0);
            }
        });
        host().preferences();
    }
    EXPECT_EQ(owner, other.get());

    start({.application_type = server});
    host().preferences(); // returns at once: no window on a server host
}

} // namespace
} // namespace vell::test
