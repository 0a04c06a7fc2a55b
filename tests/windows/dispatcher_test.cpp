// What stands between the host's call and a function's body, and what happens when the host fails.
#include "src/host/bridge/host_call_object.h"
#include "src/host/diagnostics/debug_log.h"
#include "src/host/lifecycle/dispatcher.h"
#include "src/host/vocabulary/registry.h"
#include "src/params/call.h"
#include "src/windows/error.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vell::test {
namespace {

class Dispatcher : public Plugin {};

bool within_time = true;
ErrorCode licence_state = ErrorCode::Ok;

constexpr host::LicenceChecks adjustable{
    .at_startup =
        [](bool server_host) {
            return host::LicenceStart{true, server_host};
        },
    .within_time = [] { return within_time; },
    .state = [] { return licence_state; },
};

TEST_F(Dispatcher, ChecksInTheirOrder) {
    host::replace_licence_checks(&adjustable);
    start();
    EXPECT_EQ(call(u"VlFile_ReferenceToClip", {u"", u"a"}), u"$$-4221"); // its body
    EXPECT_EQ(call(u"VlFile_Control", {u"-DisableAllFunctions", u"secret"}), u"0");
    licence_state = static_cast<ErrorCode>(-4219);
    within_time = false;
    EXPECT_EQ(call(u"VlFile_ReferenceToClip", {u"", u"a"}), u"$$-4222");
    within_time = true;
    EXPECT_EQ(call(u"VlFile_ReferenceToClip", {u"", u"a"}), u"$$-4219");
    licence_state = ErrorCode::Ok;
    EXPECT_EQ(call(u"VlFile_ReferenceToClip", {u"", u"a"}), u"$$-4220");
    EXPECT_EQ(call_id(7210, {u"", u"a", u"b"}), u"$$-4220");

    within_time = false;
    licence_state = static_cast<ErrorCode>(-4219);
    EXPECT_EQ(call(u"VlFile_Version", {}), u"Vell File Plug-In 14.0");
    EXPECT_EQ(call(u"VlFile_Version", {u"-GetVersionNumber"}), u"14");
    EXPECT_EQ(call(u"VlFile_Version", {u"-getversionstring"}), u"14.0");
    EXPECT_EQ(call(u"VlFile_VersionAutoUpdate", {}), u"14000000");
    EXPECT_EQ(call_id(7203, {u"", number(3)}), u"0");
    EXPECT_EQ(call(u"VlFile_Control", {u"-EnableAllFunctions", u"secret"}), u"0");
    within_time = true;
    licence_state = ErrorCode::Ok;
    EXPECT_EQ(call(u"VlFile_ReferenceToClip", {u"", u"a"}), u"$$-4221");
}

TEST_F(Dispatcher, UnknownIdsDoNothing) {
    start();
    for (const int id : {2, -1, 4200, 4206, 4330, 9000, 9001, 7201, 7300, 32767})
        EXPECT_EQ(call_id(static_cast<std::int16_t>(id), {u"x"}), u"") << id;
}

TEST_F(Dispatcher, TooFewParametersReachNoBody) {
    start();
    const auto with_one_less = [&](std::int16_t id, std::int16_t needed) {
        return needed == 0 ? u"$$-50" : call_id(id, std::vector<Value>(needed - 1, Value(u"")));
    };
    for (const host::FunctionRow& row : host::function_rows())
        EXPECT_EQ(with_one_less(row.registered_id(), row.least_parameters.needed), u"$$-50")
            << row.prototype;
    for (const host::StepRow& row : host::step_rows())
        EXPECT_EQ(with_one_less(row.id, row.needed_parameters), u"$$-50") << row.name;
    EXPECT_EQ(call_id(4216, {}), u"0"); // VlFile_Exists needs none
}

TEST_F(Dispatcher, ControlTakesExactlyOneActionAndTheSamePassword) {
    start();
    const auto control = [&](const char16_t* switches, const char16_t* password) {
        return call(u"VlFile_Control", {switches, password});
    };
    EXPECT_EQ(control(u"CurrentEnabledStatus", u""), u"1");
    EXPECT_EQ(control(u"", u"a"), u"$$-4218");
    EXPECT_EQ(control(u"DisableAllFunctions EnableAllFunctions", u"a"), u"$$-4218");
    EXPECT_EQ(control(u"DisableAllFunctions", u""), u"$$-50");
    EXPECT_EQ(control(u"disableallfunctions", u"pass"), u"0");
    EXPECT_EQ(control(u"CurrentEnabledStatus", u""), u"0");
    EXPECT_EQ(control(u"DisableAllFunctions", u"pass"), u"$$-4217");
    EXPECT_EQ(control(u"DisableAllFunctions", u""), u"$$-4217");
    EXPECT_EQ(call(u"VlFile_Control", {u"DisableAllFunctions"}), u"$$-4217");
    EXPECT_EQ(control(u"EnableAllFunctions", u"Pass"), u"$$-4218");
    EXPECT_EQ(control(u"EnableAllFunctions", u"pas"), u"$$-4218");
    EXPECT_EQ(call(u"VlFile_Control", {u"EnableAllFunctions"}), u"$$-4218");
    EXPECT_EQ(control(u"EnableAllFunctions", u"pass"), u"0");
    // Nothing is left out silently.
    host::debug_log().take();
    for (const char16_t* both :
         {u"-AddToDebugLog=true DisableAllFunctions", u"-GetAndClearDebugLog CurrentEnabledStatus",
          u"-AddToDebugLog=false EnableAllFunctions", u"-LogCalls=false CurrentEnabledStatus",
          u"-AddToDebugLog CurrentEnabledStatus", u"-AddToDebugLog=true -AddToDebugLog=false",
          u"-AddToDebugLog=1", u"-LogCalls=true -LogCalls=false", u"-LogCalls"})
        EXPECT_EQ(control(both, u"pass"), u"$$-4218");
    EXPECT_EQ(control(u"CurrentEnabledStatus", u""), u"1");
    EXPECT_EQ(host::debug_log().take(), "");

    EXPECT_EQ(call_id(7203, {u"", number(1), u"p"}), u"0"); // the step: action, password
    EXPECT_EQ(call_id(7203, {u"", number(2), u"q"}), u"$$-4218");
    EXPECT_EQ(call_id(7203, {u"", number(2), u"p"}), u"0");
    EXPECT_EQ(call_id(7203, {u"", number(9), u"p"}), u"$$-4218");
    EXPECT_EQ(call_id(7203, {}), u"$$-4218");
}

TEST_F(Dispatcher, StepOptionsStayWithin32BitsAndFailuresLeaveACode) {
    start();
    const auto body = [](std::int16_t, const fm::ExprEnv* environment,
                         const fm::DataVect* parameters, fm::Data* result) {
        const params::Body show_option = [](params::Call& step, System&) -> Result<void> {
            if (step.step_option(1) == 0)
                return Failure{error_from_win32(0)};
            step.set_number(step.step_option(1));
            return {};
        };
        return host::run_body(show_option, true, {environment, parameters, result});
    };
    for (const auto& [given, shown] : {std::pair(std::int64_t{3'000'000'000}, u"2147483647"),
                                       {-3'000'000'000, u"-2147483648"},
                                       {-2'147'483'648, u"-2147483648"},
                                       {0, u"$$-4298"}}) {
        const auto result = host().call_body(0, body, std::vector<Value>{u"", number(given)});
        ASSERT_TRUE(result);
        EXPECT_EQ(console::to_value(result->get()).as_text(), shown) << given;
    }
}

TEST_F(Dispatcher, TheDebugLogIsSwitchedReadAndCleared) {
    start();
    host::debug_log().take();
    host::debug_log().add("lost: the log is off");
    EXPECT_EQ(call(u"VlFile_Control", {u"-AddToDebugLog=true"}), u"0");
    host::debug_log().add("caf\xC3\xA9");
    EXPECT_EQ(call(u"VlFile_Control", {u"-AddToDebugLog=false"}), u"0");
    host::debug_log().add("lost again");
    EXPECT_EQ(call(u"VlFile_Control", {u"-GetAndClearDebugLog"}), u"Log started.\rcaf\u00E9\r");
    EXPECT_EQ(call(u"VlFile_Control", {u"-GetAndClearDebugLog"}), u"");
    host::debug_log().add_always("first");
    EXPECT_EQ(call(u"VlFile_Control", {u"-GetAndClearDebugLog -AddToDebugLog=true"}), u"first\r");
    EXPECT_EQ(call(u"VlFile_Control", {u"-AddToDebugLog=false -GetAndClearDebugLog"}),
              u"Log started.\r");
    EXPECT_FALSE(host::debug_log().is_on());
}

TEST(DebugLog, GrowsBeyondMemoryIntoItsFile) {
    host::DebugLog log;
    const std::string line(100'000, 'x');
    for (int i = 0; i < 50; ++i)
        log.add_always(std::to_string(i) + line);
    const std::string taken = log.take();
    std::size_t position = 0;
    for (int i = 0; i < 50; ++i) {
        const std::string expected = std::to_string(i) + line + "\r";
        ASSERT_EQ(taken.compare(position, expected.size(), expected), 0) << i;
        position += expected.size();
    }
    EXPECT_EQ(position, taken.size());
    EXPECT_EQ(log.take(), "");
}

// Every host call of a function fails in turn, in both ways. What must come back is the result, or
// an error code, or a nonzero code of the body where the host refuses even that text.
TEST_F(Dispatcher, SurvivesTheFailureOfEveryHostCall) {
    start();
    const TemporaryFolder folder;
    const std::u16string file = folder.file(L"contents.txt", "one\r\ntwo\nthr\xC3\xA9\xC3");
    struct Case {
        std::u16string_view function;
        std::vector<Value> arguments;
    };
    for (const Case& c :
         {Case{u"VlFile_Version", {}}, Case{u"VlFile_Version", {u"-getversionnumber"}},
          Case{u"VlFile_Control", {u"CurrentEnabledStatus", u"x"}},
          Case{u"VlFile_GetContents", {u"-Encoding=UTF8 -ConvertToFMPLinebreaks", file}},
          Case{u"VlFile_GetContents", {u"-Encoding=BytesOnly", file, number(1), number(3)}},
          Case{u"VlFile_ReferenceToClip", {u"", u"a"}}}) {
        const std::u16string expected = call(c.function, c.arguments);
        for (const auto failure :
             {console::StandInFailure::Allocation, console::StandInFailure::Unknown}) {
            const std::u16string code =
                failure == console::StandInFailure::Allocation ? u"$$-108" : u"$$-4298";
            int failures = 0;
            for (std::uint64_t n = 1; n <= 60; ++n) {
                SCOPED_TRACE(n);
                const std::int64_t live = StandIn_TotalLiveObjects();
                host().fail_calls(n, failure);
                const std::u16string result = call(c.function, c.arguments);
                EXPECT_EQ(StandIn_TotalLiveObjects(), live);
                if (host().failure_delivered()) {
                    ++failures;
                    // A report that the host refuses is left to the body's own code.
                    EXPECT_TRUE(result == code ||
                                (expected.starts_with(u"$$") && result.starts_with(u"ERRCODE: ")))
                        << std::string(result.begin(), result.end());
                } else {
                    EXPECT_EQ(result, expected);
                }
            }
            EXPECT_GE(failures, 5);
            host().fail_calls(0);
        }
    }
    EXPECT_EQ(call(u"VlFile_Control", {u"CurrentEnabledStatus"}), u"1");
}

TEST(Registry, RowsAreConsistent) {
    std::vector<std::int16_t> ids;
    for (const host::FunctionRow& row : host::function_rows()) {
        ids.push_back(row.registered_id());
        EXPECT_EQ(host::find_function(row.registered_id()), &row);
        EXPECT_EQ(host::function_prototype(row.id), row.prototype);
        EXPECT_TRUE(row.name().starts_with("VlFile_")) << row.prototype;
        EXPECT_LE(row.least_parameters.demanded, row.max_parameters) << row.prototype;
    }
    for (const host::StepRow& row : host::step_rows()) {
        ids.push_back(row.id);
        EXPECT_EQ(host::step_name(row.id), row.name);
        // A step serves its parameters where its function has them.
        const auto* function = host::find_function(static_cast<std::int16_t>(row.id - 3000));
        EXPECT_TRUE(!function || function->body == row.body) << row.name;
    }
    std::ranges::sort(ids);
    EXPECT_EQ(std::ranges::adjacent_find(ids), ids.end());
    EXPECT_EQ(host::function_prototype(4200), "VlFile__FUNCTION_NAME_NOT_SET");
    EXPECT_EQ(host::step_name(7200), "VlFile_STEP_NAME_NOT_SET");
}

std::string text_of(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The README's list of what is not built is that of the registry.
TEST(Registry, ReadmeListsWhatIsNotBuilt) {
    const std::string readme = text_of(VELL_README);
    const std::size_t start = readme.find("<!-- not built: begin -->");
    const std::size_t end = readme.find("<!-- not built: end -->");
    ASSERT_NE(start, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::string list = readme.substr(start, end - start);
    for (const host::FunctionRow& row : host::function_rows())
        EXPECT_EQ(list.find("`" + std::string(row.name()) + "`") != std::string::npos,
                  row.body == params::not_available)
            << row.name();
}

// The table of functions has a line for each prototype, and the documents that it names describe
// them.
TEST(Registry, DocumentsListTheFunctions) {
    const auto folder = std::filesystem::path(VELL_README).parent_path() / "docs" / "functions";
    const std::string index = text_of(folder / "README.md");
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = index.find("\n| `VlFile_", at)) != std::string::npos; ++at)
        ++lines;
    EXPECT_EQ(lines, host::function_rows().size());
    for (const host::FunctionRow& row : host::function_rows()) {
        const std::string cell = "\n| `" + std::string(row.prototype) + "` | ";
        const std::size_t at = index.find(cell);
        ASSERT_NE(at, std::string::npos) << row.prototype;
        const std::size_t link = at + cell.size();
        if (index[link] != '[') {
            EXPECT_TRUE(row.body == params::not_available) << row.prototype;
            continue;
        }
        const std::size_t name = index.find('(', link) + 1;
        const std::string document = index.substr(name, index.find(')', name) - name);
        const std::string text = text_of(folder / document);
        // A header may describe functions of a kind together.
        EXPECT_TRUE(document.ends_with(".md") ? text.find(row.name()) != std::string::npos
                                              : !text.empty())
            << row.name() << " in " << document;
    }
}

} // namespace
} // namespace vell::test
