// The plug-in behind the host's own interface: what arrives there, and what happens when it fails.
#include "src/plugin/main_window.h"
#include "src/plugin/vocabulary/registry.h"
#include "src/windows/system.h"
#include "tests/windows/plugin_fixture.h"

#include <filesystem>
#include <set>

namespace vell::test {
namespace {

class Host : public Plugin {};

TEST_F(Host, GetsTheVocabularyThatItsVersionHasRoomFor) {
    for (const int api_version : {50, 55, 56, 57}) {
        SCOPED_TRACE(api_version);
        EXPECT_EQ(start({.api_version = static_cast<std::int16_t>(api_version)}), 59);
        EXPECT_EQ(host().functions().size(), plugin::function_rows().size());
        for (const console::RegisteredFunction& function : host().functions()) {
            EXPECT_EQ(function.description.empty(), api_version < 56);
            EXPECT_EQ(function.plugin_id, "V7fi");
        }
        EXPECT_EQ(host().steps().size(), api_version < 57 ? 0 : plugin::step_rows().size());
        EXPECT_TRUE(host().definition_errors().empty());
        const auto* dialog = host().find_function(u"VlFile_ContentsDialog");
        EXPECT_EQ(dialog->id, 4202);
        EXPECT_EQ(dialog->flags, 0xe900u);
        EXPECT_EQ(dialog->min_arguments, 1);
        EXPECT_EQ(dialog->max_arguments, 3);
        EXPECT_TRUE(dialog->prototype.starts_with(u"VlFile_ContentsDialog( switches ; "));
        host().shut_down();
        EXPECT_EQ(StandIn_FunctionCount(), 0u);
        EXPECT_EQ(StandIn_StepCount(), 0u);
    }
    start();
    const auto* zip = host().find_step(u"UnZip");
    EXPECT_EQ(zip->id, 7304);
    EXPECT_EQ(zip->flags, 0xFF6Eu);
    EXPECT_EQ(zip->definition.parameters.size(), 5u);
    EXPECT_TRUE(zip->description.starts_with(u"|"));
}

TEST_F(Host, IsLoggedForThroughItsMessages) {
    StandIn_FailRegistration(4, 777);
    EXPECT_EQ(start({.application_type = server}), 59);
    EXPECT_EQ(new_log_lines().size(), 8u);
    call_id(1, {u""});
    host().session_shutdown(5);
    host().file_shutdown(5, 9);
    StandIn_FailUnregistration(3, 888);
    host().shut_down();
    std::vector<std::string> lines = new_log_lines();
    ASSERT_EQ(lines.size(), 7u);
    lines.pop_back(); // a number of functions
    const std::string source = "[Vell File Plug-In] ";
    EXPECT_EQ(lines, (std::vector{source + "External function called. functionID: 1",
                                  source + "External function end. functionID: 1",
                                  source + "Session shutdown completed. (sessionID = 5)",
                                  source + "File shutdown completed. (sessionID = 5 fileID = 9)",
                                  source + "Plug-in shutdown started.",
                                  source + "Plug-in shutdown error. Errorcode = 888"}));
    start({.application_type = web_server});
    EXPECT_EQ(new_log_lines(web_log).back(), source + "Plug-in startup completed.");
}

TEST_F(Host, MaySendOddRecords) {
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
    EXPECT_EQ(host().string_query(128, 5), u"Vell");
    host().idle(0);
    host().idle(9);
}

TEST_F(Host, HasAMainWindowThatOwnsTheAboutBox) {
    const TestWindow longer(L"fmproXX.0appWindow");
    const TestWindow other(L"FMPRO19.0APP");
    if (!longer.get() || !other.get())
        GTEST_SKIP() << "no display";
    start({.api_version = 67});
    EXPECT_EQ(host::the_plugin().main_window(), longer.get());
    start({.api_version = 62});
    EXPECT_EQ(host::the_plugin().main_window(), other.get());

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
}

TEST(OverflowFile, TakesWhatIsWrittenOverEarlierBytesAndIsOne) {
    files::Logs& logs = windows::system().logs();
    auto file = logs.new_overflow_file();
    ASSERT_TRUE(file);
    EXPECT_FALSE(logs.new_overflow_file());
    EXPECT_TRUE(file->write(0, "first, and what failed"));
    EXPECT_TRUE(file->write(5, " and last"));
    EXPECT_EQ(file->read(14), "first and last");
    file.reset();
    EXPECT_TRUE(logs.new_overflow_file());
}

// The process of another user's, or of the same, may have put anything in the place of a known
// name.
TEST(OverflowFile, IsOfThisProcessAlone) {
    const std::filesystem::path temporary = std::filesystem::temp_directory_path();
    const auto names = [&] {
        std::set<std::wstring> found;
        for (const auto& entry : std::filesystem::directory_iterator(temporary))
            if (entry.path().filename().wstring().starts_with(L"VELLDEBUGLOG"))
                found.insert(entry.path().wstring());
        return found;
    };
    const UniqueFile others(CreateFileW((temporary / L"VELLDEBUGLOG.tmp").c_str(), GENERIC_WRITE, 0,
                                        nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE,
                                        nullptr));
    ASSERT_TRUE(others);
    const std::set<std::wstring> before = names();
    std::set<std::wstring> made;
    for (int i = 0; i < 2; ++i) {
        const auto file = windows::system().logs().new_overflow_file();
        ASSERT_TRUE(file);
        for (const std::wstring& name : names()) {
            if (before.contains(name))
                continue;
            EXPECT_TRUE(is_private(name));
            made.insert(name);
        }
    }
    EXPECT_EQ(made.size(), 2u);
    EXPECT_EQ(names(), before);
}

} // namespace
} // namespace vell::test
