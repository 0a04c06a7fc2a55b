// The plug-in in a host and a system of its own: what the host's messages do, and what stands
// between a call and a function's body.
#include "src/files/paths/defaults.h"
#include "src/plugin/main_window.h"
#include "src/plugin/plugin.h"
#include "src/plugin/vocabulary/own_functions.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_items.h"
#include "tests/portable/no_drops.h"

#include <map>
#include <stdexcept>

namespace vell::plugin {
namespace {

using Texts = std::vector<std::u16string>;
using Lines = std::vector<std::string>;

// Answers with these errors; lack of memory and what has no number are thrown.
void throw_if_due(ErrorCode code) {
    if (code == ErrorCode::OutOfMemory)
        throw std::bad_alloc();
    if (code == ErrorCode::HostFailure)
        throw std::runtime_error("of the host");
}

class FakeHost : public Host {
  public:
    void meet(std::int16_t api_version) override { has_steps_ = api_version >= 57; }
    bool has_steps() const override { return has_steps_; }
    ErrorCode add(const FunctionRow& row) override { return add(row.registered_id()); }
    ErrorCode add(const StepRow& row) override { return add(row.id); }
    ErrorCode remove_function(std::int16_t id) override { return remove_step(id); }
    ErrorCode remove_step(std::int16_t id) override {
        const ErrorCode code = answer(id);
        if (code == ErrorCode::Ok)
            std::erase(registered, id);
        return code;
    }

    std::vector<std::int16_t> registered;
    std::map<std::int16_t, ErrorCode> refused;

  private:
    ErrorCode answer(std::int16_t id) {
        throw_if_due(refused[id]);
        return refused[id];
    }
    ErrorCode add(std::int16_t id) {
        const ErrorCode code = answer(id);
        if (code == ErrorCode::Ok)
            registered.push_back(id);
        return code;
    }

    bool has_steps_ = false;
};

// Keeps what is written down and shown. The overflow file is in memory.
class NotingSystem : public test::FakeSystem {
  public:
    bool is_visible() override { return visible; }
    void* main_window(std::u16string_view class_name) override {
        wanted_class = class_name;
        return &wanted_class;
    }
    void inform(void* owner, const std::u16string& title, const std::u16string&) override {
        EXPECT_EQ(owner, &wanted_class);
        shown.push_back(title);
    }
    void append(files::LogChannel channel, files::LogFolder folder, std::string_view source,
                std::string_view text) override {
        EXPECT_EQ(source, plugin_name);
        const char* const where = channel == files::LogChannel::Web ? "web: "
                                  : folder == files::LogFolder::Own ? "own: "
                                                                    : "";
        lines.push_back(where + std::string(text));
    }
    std::unique_ptr<files::OverflowFile> new_overflow_file() override {
        return has_overflow ? std::make_unique<Overflow>() : nullptr;
    }

    bool visible = true;
    bool has_overflow = true;
    std::u16string wanted_class;
    Texts shown;
    Lines lines;

  private:
    class Overflow : public files::OverflowFile {
      public:
        bool write(std::uint64_t position, std::string_view bytes) override {
            bytes_.resize(position);
            bytes_ += bytes;
            return true;
        }
        std::string read(std::uint64_t size) override { return bytes_.substr(0, size); }

      private:
        std::string bytes_;
    };
};

class FakeHostCall : public HostCall {
  public:
    FakeHostCall(Texts parameters, std::optional<std::int32_t> action)
        : call(std::move(parameters)) {
        if (action)
            call.set_step_option(1, *action);
    }
    params::Call& open(bool) override {
        throw_if_due(failure);
        return call;
    }
    void set_result(std::string_view text) override {
        throw_if_due(takes_no_result ? ErrorCode::HostFailure : ErrorCode::Ok);
        call.set_literal(text);
    }

    test::FakeCall call;
    ErrorCode failure = ErrorCode::Ok;
    bool takes_no_result = false;
};

constexpr std::int16_t control = 4203;
constexpr std::int16_t control_step = 7203;
constexpr std::int16_t auto_update = 9002;
constexpr std::int16_t not_built = 4263;

class PluginInHost : public ::testing::Test {
  protected:
    std::int64_t start(ApplicationType type = ApplicationType::Pro, std::int16_t api_version = 67) {
        return plugin.start_up(api_version, static_cast<std::uint8_t>(type), u"Pro 19.5.1");
    }
    // The result, or the number that the call itself answers with.
    std::string call(std::int16_t id, Texts parameters, std::optional<std::int32_t> action = {}) {
        FakeHostCall given(std::move(parameters), action);
        return call(id, given);
    }
    std::string call(std::int16_t id, FakeHostCall& given) {
        const std::int16_t answer = plugin.serve(id, given);
        return answer == 0 ? utf8_from_utf16(given.call.result().value_or(u"<none>"))
                           : "error " + std::to_string(answer);
    }
    Lines new_lines() { return std::exchange(system.lines, {}); }

    FakeHost host;
    NotingSystem system;
    test::NoDrops none;
    dragdrop::DragAndDrop drops{none, none, system};
    Plugin plugin{host, system, drops};
};

TEST_F(PluginInHost, ChecksInTheirOrder) {
    static bool within_time;
    static ErrorCode licence_state;
    constexpr LicenceChecks adjustable{
        .at_startup =
            [](bool server) {
                return LicenceStart{within_time, server && within_time};
            },
        .within_time = [] { return within_time; },
        .state = [] { return licence_state; },
    };
    plugin.licence = &adjustable;
    EXPECT_EQ(start(ApplicationType::Server), startup_accepted);
    EXPECT_TRUE(host.registered.empty());
    EXPECT_EQ(new_lines().back(), "Startup phase failed");
    plugin.shut_down();
    EXPECT_EQ(new_lines(), Lines());

    within_time = true;
    start();
    EXPECT_EQ(call(not_built, {u"", u"a"}), "$$-4221"); // its body
    EXPECT_EQ(call(control, {u"-DisableAllFunctions", u"secret"}), "0");
    EXPECT_EQ(call(not_built, {u"", u"a"}), "$$-4220");
    EXPECT_EQ(call(7210, {u"", u"a", u"b"}), "$$-4220");
    licence_state = static_cast<ErrorCode>(-4219);
    EXPECT_EQ(call(not_built, {u"", u"a"}), "$$-4219");
    within_time = false;
    for (const std::int16_t id : {not_built, std::int16_t{2}})
        EXPECT_EQ(call(id, {u"", u"a"}), "$$-4222");

    EXPECT_EQ(call(0, {}), "Vell File Plug-In 14.0");
    EXPECT_EQ(call(1, {u"-GetVersionNumber"}), "14");
    EXPECT_EQ(call(1, {u"-getversionstring"}), "14.0");
    EXPECT_EQ(call(1, {u"-getlibraries"}), "Counter 1.2.3\rDrawer 4.5");
    EXPECT_EQ(call(auto_update, {}), "14000000");
    EXPECT_EQ(call(control_step, {u"", u"", u""}, control_current_status), "0");
    EXPECT_EQ(call(control, {u"-EnableAllFunctions", u"secret"}), "0");
}

TEST_F(PluginInHost, ReachesABodyWithAKnownIdAndEnoughParametersOnly) {
    start();
    for (const int id : {2, -1, 4200, 4206, 4330, 9000, 9001, 7201, 7300, 32767})
        EXPECT_EQ(call(static_cast<std::int16_t>(id), {u"x"}), "<none>") << id;
    const auto with_one_less = [&](std::int16_t id, std::int16_t needed) {
        return needed == 0 ? "$$-50" : call(id, Texts(static_cast<std::size_t>(needed - 1)));
    };
    for (const FunctionRow& row : function_rows())
        EXPECT_EQ(with_one_less(row.registered_id(), row.least_parameters.needed), "$$-50")
            << row.prototype;
    for (const StepRow& row : step_rows())
        EXPECT_EQ(with_one_less(row.id, row.needed_parameters), "$$-50") << row.name;
    EXPECT_EQ(call(4216, {}), "0"); // VlFile_Exists needs none
}

TEST_F(PluginInHost, WhateverFailsLeavesACode) {
    start();
    FakeHostCall given({u""}, {});
    for (const auto& [failure, result] :
         {std::pair(ErrorCode::OutOfMemory, "-108"), {ErrorCode::HostFailure, "-4298"}}) {
        given.failure = failure;
        given.takes_no_result = false;
        EXPECT_EQ(call(auto_update, given), std::string("$$") + result);
        given.takes_no_result = true;
        EXPECT_EQ(call(auto_update, given), std::string("error ") + result);
    }
    EXPECT_EQ(call(4204, {u"-Encoding=BytesOnly", u"\u20AC"}), // VlFile_ConvertFromFMText
              "VellParamErr: XP7_GetBytesImproved failed");
}

TEST_F(PluginInHost, ControlTakesExactlyOneActionAndTheSamePassword) {
    start();
    const auto answers = [&](const char16_t* switches, const char16_t* password) {
        return call(control, {switches, password});
    };
    for (const auto& [switches, password, answer] :
         {std::tuple(u"CurrentEnabledStatus", u"", "1"),
          {u"", u"a", "$$-4218"},
          {u"DisableAllFunctions EnableAllFunctions", u"a", "$$-4218"},
          {u"DisableAllFunctions", u"", "$$-50"},
          {u"disableallfunctions", u"pass", "0"},
          {u"CurrentEnabledStatus", u"", "0"},
          {u"DisableAllFunctions", u"pass", "$$-4217"},
          {u"DisableAllFunctions", u"", "$$-4217"},
          {u"EnableAllFunctions", u"Pass", "$$-4218"},
          {u"EnableAllFunctions", u"pas", "$$-4218"},
          {u"EnableAllFunctions", u"", "$$-4218"},
          {u"EnableAllFunctions", u"pass", "0"}})
        EXPECT_EQ(answers(switches, password), answer);
    // Nothing is left out silently.
    for (const char16_t* both :
         {u"-AddToDebugLog=true DisableAllFunctions", u"-GetAndClearDebugLog CurrentEnabledStatus",
          u"-AddToDebugLog=false EnableAllFunctions", u"-LogCalls=false CurrentEnabledStatus",
          u"-AddToDebugLog CurrentEnabledStatus", u"-AddToDebugLog=true -AddToDebugLog=false",
          u"-AddToDebugLog=1", u"-LogCalls=true -LogCalls=false", u"-LogCalls"})
        EXPECT_EQ(answers(both, u"pass"), "$$-4218");
    EXPECT_EQ(answers(u"CurrentEnabledStatus", u""), "1");
    EXPECT_EQ(plugin.debug_log.take(), "");

    EXPECT_EQ(call(control_step, {u"", u"", u"p"}, control_disable_all), "0");
    EXPECT_EQ(call(control_step, {u"", u"", u"q"}, control_enable_all), "$$-4218");
    EXPECT_EQ(call(control_step, {u"", u"", u"p"}, control_enable_all), "0");
    EXPECT_EQ(call(control_step, {u"", u"", u"p"}, 9), "$$-4218");
    EXPECT_EQ(call(control_step, {}, params::Call::not_given), "$$-4218");
}

TEST_F(PluginInHost, TheDebugLogIsSwitchedReadAndCleared) {
    start();
    plugin.debug_log.add("lost: the log is off");
    EXPECT_EQ(call(control, {u"-AddToDebugLog=true"}), "0");
    plugin.debug_log.add("caf\xC3\xA9");
    EXPECT_EQ(call(control, {u"-AddToDebugLog=false"}), "0");
    plugin.debug_log.add("lost again");
    EXPECT_EQ(call(control, {u"-GetAndClearDebugLog"}), "Log started.\rcaf\xC3\xA9\r");
    EXPECT_EQ(call(control, {u"-GetAndClearDebugLog"}), "");
    plugin.debug_log.add_always("first");
    EXPECT_EQ(call(control, {u"-GetAndClearDebugLog -AddToDebugLog=true"}), "first\r");
    EXPECT_EQ(call(control, {u"-AddToDebugLog=false -GetAndClearDebugLog"}), "Log started.\r");
    EXPECT_FALSE(plugin.debug_log.is_on());
}

TEST_F(PluginInHost, ALongDebugLogOverflowsOrLosesItsOlderHalf) {
    const std::string line(100'000, 'x');
    for (const bool has_room : {true, false}) {
        system.has_overflow = has_room;
        std::string expected;
        for (int i = 0; i < 15; ++i) {
            const std::string numbered = std::to_string(i) + line;
            plugin.debug_log.add_always(numbered);
            expected += numbered + "\r";
            if (!has_room && i == 10)
                expected = "Older lines dropped.\r" + expected.substr(6 * (line.size() + 2));
        }
        EXPECT_TRUE(plugin.debug_log.take() == expected) << has_room;
        EXPECT_EQ(plugin.debug_log.take(), "");
    }
}

TEST_F(PluginInHost, RegistersForTheHostsOfAllVersions) {
    const std::size_t functions = function_rows().size();
    for (const auto& [api_version, answer, registered] :
         {std::tuple(49, startup_bad_version, std::size_t{0}),
          {50, startup_accepted, functions},
          {57, startup_accepted, functions + step_rows().size()},
          {255, startup_accepted, functions + step_rows().size()},
          {256, startup_bad_version, std::size_t{0}},
          {-1, startup_bad_version, std::size_t{0}}}) {
        EXPECT_EQ(start(ApplicationType::Pro, static_cast<std::int16_t>(api_version)), answer);
        EXPECT_EQ(host.registered.size(), registered) << api_version;
        EXPECT_EQ(plugin.state.registered_functions, registered == 0 ? 0 : int(functions));
        plugin.shut_down();
        EXPECT_TRUE(host.registered.empty());
        EXPECT_TRUE(plugin.state.registered_functions == 0 || registered == 0);
    }
}

TEST_F(PluginInHost, AFailedRegistrationEndsItsGroup) {
    const std::size_t all = function_rows().size() + step_rows().size();
    constexpr std::size_t second_group = 5;
    for (const auto& [id, code, registered] :
         {std::tuple(std::int16_t{4201}, static_cast<ErrorCode>(777),
                     3 + second_group + step_rows().size()),
          {std::int16_t{4305}, ErrorCode::OutOfMemory, all - 1},
          {std::int16_t{7203}, ErrorCode::HostFailure, function_rows().size() + 2}}) {
        host.registered.clear();
        host.refused = {{id, code}};
        EXPECT_EQ(start(ApplicationType::Server), startup_accepted);
        EXPECT_EQ(host.registered.size(), registered);
        EXPECT_EQ(plugin.debug_log.take(),
                  "VlRegExternalFunc: Error with function ID= " + std::to_string(id) + "\r");
        const Lines lines = new_lines();
        EXPECT_EQ(lines[lines.size() - 2], "Vell File Plug-In: startup problem, errorcode = " +
                                               std::to_string(number(code)));
    }
}

TEST_F(PluginInHost, ServerHostsGetTheirLines) {
    EXPECT_EQ(start(ApplicationType::Server), startup_accepted);
    EXPECT_EQ(new_lines(),
              (Lines{std::string(41, '*'),
                     "Vell File Plug-In 14.0 started running under FileMaker Server.",
                     "Running as a 64 bit Plug-in.", "Internal FM App version: 67",
                     "Plug-in build number: 508", "Libraries: Counter 1.2.3, Drawer 4.5",
                     "Plug-in startup completed."}));
    const auto lines_of = [&](std::int16_t id, const char16_t* switches) {
        call(id, {switches});
        return new_lines();
    };
    const auto pair = [](const std::string& id) {
        return Lines{"External function called. functionID: " + id,
                     "External function end. functionID: " + id};
    };
    EXPECT_EQ(lines_of(auto_update, u""), pair("9002"));
    EXPECT_EQ(lines_of(control, u"-LogCalls=false"), pair("4203")); // its own pair is whole
    EXPECT_EQ(lines_of(control, u"-LogCalls=true"), Lines());
    EXPECT_EQ(lines_of(auto_update, u""), pair("9002"));

    plugin.session_shut_down(5);
    plugin.file_shut_down(5, 9);
    host.refused = {{4201, static_cast<ErrorCode>(888)}, {4202, static_cast<ErrorCode>(999)}};
    plugin.shut_down();
    EXPECT_EQ(new_lines(),
              (Lines{"Session shutdown completed. (sessionID = 5)",
                     "File shutdown completed. (sessionID = 5 fileID = 9)",
                     "Plug-in shutdown started.", "Plug-in shutdown error. Errorcode = 888",
                     "Plug-in shutdown PROBLEM: count of unregistered functions incorrect: " +
                         std::to_string(function_rows().size() - 2)}));
    host.refused.clear();
    start(ApplicationType::Server);
    plugin.shut_down();
    EXPECT_EQ(new_lines().back(), "Plug-in shutdown completed.");
}

TEST_F(PluginInHost, OnlyServerHostsAreLoggedFor) {
    for (const int type : {0, 1, 2, 5, 6, 8, 9, 200}) {
        start(static_cast<ApplicationType>(type));
        EXPECT_EQ(call(auto_update, {}), "14000000");
        plugin.session_shut_down(1);
        plugin.file_shut_down(1, 2);
        plugin.shut_down();
        EXPECT_EQ(new_lines(), Lines()) << type;
    }
    EXPECT_EQ(start(ApplicationType::ServerSase, 49), startup_bad_version);
    EXPECT_EQ(new_lines()[1],
              "Vell File Plug-In 14.0 started running under FileMaker Server (SASE).");
    start(ApplicationType::WebServer);
    EXPECT_EQ(new_lines()[1],
              "web: Vell File Plug-In 14.0 started running under FileMaker Web server.");
    host.refused = {{0, ErrorCode::HostFailure}};
    start();
    EXPECT_EQ(new_lines(), Lines{"own: Vell File Plug-In: startup problem, errorcode = -4298"});
    plugin.shut_down();
}

TEST_F(PluginInHost, StartedAgainItIsAsNew) {
    start(ApplicationType::Server);
    EXPECT_EQ(call(4281, {u"", u"txt"}), "0"); // VlFile_SetDefaultType
    EXPECT_EQ(files::default_file_types(), u"txt");
    EXPECT_EQ(call(control, {u"-AddToDebugLog=true -LogCalls=false"}), "0");
    EXPECT_EQ(call(control, {u"DisableAllFunctions", u"forgotten"}), "0");
    plugin.shut_down();
    EXPECT_FALSE(plugin.state.idle_enabled);
    start(ApplicationType::Server);
    EXPECT_TRUE(plugin.state.idle_enabled);
    new_lines();
    EXPECT_EQ(call(control, {u"CurrentEnabledStatus"}), "1");
    EXPECT_EQ(new_lines().size(), 2u);
    EXPECT_EQ(call(control, {u"EnableAllFunctions", u"forgotten"}), "$$-4218");
    EXPECT_EQ(files::default_file_types(), u"");
    EXPECT_FALSE(plugin.debug_log.is_on());
    EXPECT_EQ(plugin.debug_log.take(), "");
}

TEST_F(PluginInHost, ShowsItsBoxOverTheHostsWindowWhereSomebodySeesIt) {
    start();
    plugin.show_about_box();
    EXPECT_EQ(system.shown, Texts{u"About Vell File Plug-In"});
    EXPECT_EQ(system.wanted_class, u"FMPROxx.0APP");
    start(ApplicationType::Odbc);
    plugin.show_about_box();
    system.visible = false;
    start();
    plugin.show_about_box();
    EXPECT_EQ(system.shown.size(), 1u);
    for (const auto& [version, wanted] : {std::pair(56, u""),
                                          {57, u"FMPRO16.0APP"},
                                          {58, u"FMPROxx.0APP"},
                                          {59, u"FMPRO17.0APP"},
                                          {60, u"FMPRO18.0APP"},
                                          {62, u"FMPRO19.0APP"}})
        EXPECT_EQ(main_window_class(static_cast<std::int16_t>(version)), wanted);
}

TEST(StringQuery, FillsTheBufferAndNoMore) {
    const auto text = [](int string_number, std::size_t capacity) {
        std::u16string buffer(capacity + 1, u'?');
        answer_string_query(static_cast<std::uint8_t>(string_number),
                            std::span(buffer).first(capacity));
        EXPECT_EQ(buffer[capacity], u'?');
        return std::u16string(buffer.c_str());
    };
    EXPECT_EQ(text(131, 100), u"V7fi1YnYYnn");
    EXPECT_EQ(text(130, 100), u"");
    EXPECT_EQ(text(0, 100), u"");
    EXPECT_TRUE(text(129, 500).starts_with(u"Vell File Plug-In 14.0. This plug-in (for FileMaker "
                                           u"16 to 19.5) adds steps and functions for file and "
                                           u"folder manipulation. \r"));
    EXPECT_TRUE(text(132, 500).ends_with(u"/id/?")); // the number of a function goes behind it
    for (std::size_t capacity = 1; capacity <= 18; ++capacity)
        EXPECT_EQ(text(128, capacity),
                  std::u16string(u"Vell File Plug-In").substr(0, capacity - 1));
    answer_string_query(128, {});
}

TEST(HostVersion, IsOneNumber) {
    EXPECT_EQ(host_version_number(u"Pro 19.5.1"), 19501);
    EXPECT_EQ(host_version_number(u"Pro 13.0v2"), 13002);
    EXPECT_EQ(host_version_number(u"ProAdvanced 16"), 16000);
    EXPECT_EQ(host_version_number(u"Server 19.10.2"), 19999);
    EXPECT_EQ(host_version_number(u"Pro 99999999999999.99999999999.9"), 999999);
    EXPECT_EQ(host_version_number(u""), 0);
}

} // namespace
} // namespace vell::plugin
