// Commands that exist only here: their output, their times and their settings.
#include "src/files/commands/running_command.h"
#include "src/files/commands/shell.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <deque>

namespace vell::files {
namespace {

// Writes and ends at given times; the clock goes on only while somebody waits.
class FakeCommand : public RunningCommand, public Clock {
  public:
    struct Writing {
        std::uint64_t at;
        std::string bytes;
    };
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    explicit FakeCommand(std::uint64_t ends, std::deque<Writing> writings = {},
                         std::uint64_t closes = 0)
        : ends_(ends), closes_(std::max(ends, closes)), writings_(std::move(writings)) {}

    std::uint64_t now = 0;
    std::size_t longest_read = 0;
    std::size_t fail_end_query = 0;
    std::size_t fail_read = 0;

    std::uint64_t milliseconds() override { return now; }
    params::CalendarTime local_time() override { return test::noon; }
    Result<bool> has_ended() override {
        if (fail_end_query > 0 && --fail_end_query == 0)
            return Failure{ErrorCode::Busy};
        return now >= ends_;
    }
    void wait(std::uint32_t milliseconds) override {
        now = now < ends_ ? std::min(now + milliseconds, ends_) : now + milliseconds;
    }
    std::optional<std::size_t> waiting_output() override {
        for (; !writings_.empty() && writings_.front().at <= now; writings_.pop_front())
            waiting_ += writings_.front().bytes;
        if (waiting_.size() == taken_ && now >= closes_)
            return std::nullopt;
        return waiting_.size() - taken_;
    }
    Result<std::size_t> read(std::span<char> buffer) override {
        if (fail_read > 0 && --fail_read == 0)
            return Failure{ErrorCode::OutOfMemory};
        longest_read = std::max(longest_read, buffer.size());
        const std::size_t count = waiting_.copy(buffer.data(), buffer.size(), taken_);
        taken_ += count;
        return count;
    }

  private:
    std::uint64_t ends_;
    std::uint64_t closes_;
    std::deque<Writing> writings_;
    std::string waiting_;
    std::size_t taken_ = 0;
};

std::u16string output_of(FakeCommand& command, const CommandSettings& settings) {
    CommandOutput output(settings.encoding);
    const Result<void> collected = collect_output(command, command, settings, output);
    if (!collected)
        return utf16_from_utf8(std::to_string(number(collected.error())));
    test::FakeCall call({});
    output.hand_over(call);
    return *call.result();
}

// 60 ticks of the clock take two seconds.
constexpr CommandSettings short_limit{.time_limit = 60};

TEST(RunningCommand, IsGivenUpWhenItsTimeHasPassed) {
    FakeCommand in_time(2050);
    EXPECT_EQ(output_of(in_time, short_limit), u"");
    FakeCommand silent(FakeCommand::never);
    EXPECT_EQ(output_of(silent, short_limit), u"-4230");
    EXPECT_GE(silent.now, 2100u);
    EXPECT_LT(silent.now, 2120u);
    // Looks are ten milliseconds apart at most, and the end is seen at once.
    FakeCommand quick(25);
    EXPECT_EQ(output_of(quick, short_limit), u"");
    EXPECT_EQ(quick.now, 25u);
}

TEST(RunningCommand, OutputMovesTheLimitOneSecondOn) {
    std::deque<FakeCommand::Writing> lines;
    for (std::uint64_t i = 0; i < 30; ++i)
        lines.push_back({1000 * i, "line\n"});
    FakeCommand steady(30'000, lines);
    EXPECT_EQ(output_of(steady, short_limit).size(), 30u * 6); // "line\r\n"
    // However much there was, the limit passes behind the last output, or a second does: of 60
    // ticks it takes the clock two seconds, of 30 and less as long, of 150 five.
    lines.erase(lines.begin() + 10, lines.end());
    for (const auto& [limit, over] : {std::pair{60, 11'100u}, {30, 11'100u}, {150, 14'100u}}) {
        FakeCommand then_silent(FakeCommand::never, lines);
        EXPECT_EQ(output_of(then_silent, {.time_limit = limit}), u"-4230");
        EXPECT_GE(then_silent.now, over);
        EXPECT_LT(then_silent.now, over + 20);
    }
    // What is read without a pause counts once.
    FakeCommand burst(FakeCommand::never, {{3000, std::string(100'000, 'x')}, {3001, "y"}});
    EXPECT_EQ(output_of(burst, {.time_limit = 150}), u"-4230");
    EXPECT_GE(burst.now, 7100u);
    EXPECT_LT(burst.now, 7120u);
}

TEST(RunningCommand, ReadsALotWithoutWaiting) {
    FakeCommand command(1, {{0, std::string(5'000'000, 'x')}});
    EXPECT_EQ(output_of(command, short_limit).size(), 5'000'000u);
    EXPECT_EQ(command.longest_read, 2000u);
    EXPECT_EQ(command.now, 1u);
}

TEST(RunningCommand, OthersMayWriteToItsOutputForAWhile) {
    const std::deque<FakeCommand::Writing> writings{{100, "own "}, {100, "left "}, {900, "late"}};
    // The last writer ends it, the wait after the exit, or the exit itself.
    FakeCommand closed(100, writings, 1000);
    EXPECT_EQ(output_of(closed, {}), u"own left late");
    EXPECT_LE(closed.now, 1010u);
    FakeCommand held(100, writings, FakeCommand::never);
    EXPECT_EQ(output_of(held, {}), u"own left late");
    EXPECT_GE(held.now, 8100u); // 240 ticks
    EXPECT_LT(held.now, 8120u);
    for (const Ticks wait : {Ticks{0}, Ticks{-60}}) {
        FakeCommand not_waited_for(100, writings, FakeCommand::never);
        EXPECT_EQ(output_of(not_waited_for, {.wait_after_exit = wait}), u"own left ");
        EXPECT_EQ(not_waited_for.now, 100u);
    }
}

TEST(RunningCommand, ReportsTheSystemsFailures) {
    FakeCommand unknown_state(FakeCommand::never);
    unknown_state.fail_end_query = 3;
    EXPECT_EQ(output_of(unknown_state, {}), u"-47");
    for (const std::uint64_t at : {50, 200}) { // before its end and after
        FakeCommand unreadable(100, {{at, "x"}}, 300);
        unreadable.fail_read = 1;
        EXPECT_EQ(output_of(unreadable, {}), u"-108") << at;
    }
}

struct ShellRun {
    std::u16string result; // or the code
    std::u16string command;
    CommandSettings settings;
};

class NotedCommands : public test::FakeSystem {
  public:
    explicit NotedCommands(ShellRun& run, std::string writes)
        : run_(run), writes_(std::move(writes)) {}
    Result<std::unique_ptr<RunningCommand>> start(const std::u16string& command,
                                                  const CommandSettings& settings) override {
        run_.command = command;
        run_.settings = settings;
        return std::unique_ptr<RunningCommand>(
            std::make_unique<FakeCommand>(5, std::deque<FakeCommand::Writing>{{0, writes_}}));
    }

  private:
    ShellRun& run_;
    std::string writes_;
};

ShellRun run(test::FakeCall& call, const std::string& writes = "") {
    ShellRun run;
    NotedCommands system(run, writes);
    const Result<void> done = execute_shell(call, system);
    EXPECT_EQ(done.has_value(), call.result().has_value());
    run.result = done ? *call.result() : utf16_from_utf8(std::to_string(number(done.error())));
    return run;
}

ShellRun run_function(std::u16string switches, const std::string& writes = "") {
    test::FakeCall call({std::move(switches), u"some command"});
    return run(call, writes);
}

TEST(ExecuteShell, TakesItsTimesFromTheSwitches) {
    EXPECT_EQ(run_function(u"").settings.time_limit, 1200);
    EXPECT_EQ(run_function(u"").settings.wait_after_exit, 240);
    const struct {
        const char16_t* switches;
        Ticks limit; // or the code
    } cases[] = {
        {u"-TimeoutSecs=86400", 5'184'000},
        {u"-TimeoutSecs=86401", -4239},
        {u"-timeoutsecs 30 -ShowCommandWindow", 1800},
        {u"-TimeoutSecs=0", 0},
        {u"-TimeoutSecs=18446744073709551617", -4239},
        {u"-TimeoutSecs=soon", -4239},
        {u"-TimeoutTicks=5184000", 5'184'000},
        {u"-TimeoutTicks=5184001", -4239},
        {u"-TimeoutTicks=5184001 -TimeoutSecs=2", 120},
    };
    for (const auto& [switches, limit] : cases) {
        const ShellRun done = run_function(switches);
        const Ticks outcome = done.command.empty() ? std::stoll(utf8_from_utf16(done.result))
                                                   : done.settings.time_limit;
        EXPECT_EQ(outcome, limit) << utf8_from_utf16(switches);
    }
    EXPECT_EQ(run_function(u"-WaitAfterExitTicks=7").settings.wait_after_exit, 7);
    // Only the first 1000 characters count.
    const std::u16string far(984, u' ');
    EXPECT_EQ(run_function(far + u"-TimeoutTicks=77").settings.time_limit, 77);
    EXPECT_EQ(run_function(far + u"-TimeoutTicks=777").settings.time_limit, 77);
}

TEST(ExecuteShell, GivesTheOutputDecoded) {
    const std::string bytes = "caf\xC3\xA9\n\xFF\r\nend\r";
    EXPECT_EQ(run_function(u"", bytes).result, u"caf\u00E9\r\n<INVALID UTF8>\rend\r");
    EXPECT_EQ(run_function(u"-Encoding=BytesOnly", bytes).result,
              u"caf\u00C3\u00A9\r\n\u00FF\rend\r");
    const ShellRun started = run_function(u"-DontWaitOnResult -ShowCommandWindow", "unread");
    EXPECT_EQ(started.result, u"0");
    EXPECT_EQ(started.command, u"some command");
    EXPECT_TRUE(started.settings.show_window);
}

TEST(ExecuteShell, RefusesWhatItCannotRun) {
    test::FakeCall cut({u"", std::u16string(u"echo a\0b", 8)});
    EXPECT_EQ(run(cut).result, u"-50");
    // "cmd /c " counts, too.
    for (const auto& [length, result] : {std::pair(8184, u"0"), {8185, u"-50"}}) {
        test::FakeCall call({u"-DontWaitOnResult", std::u16string(length, u'x')});
        EXPECT_EQ(run(call).result, result) << length;
    }
    test::FakeCall refused({u"", u"x"});
    test::FakeSystem without_commands;
    EXPECT_EQ(execute_shell(refused, without_commands).error(), ErrorCode::NotAvailable);
}

TEST(ExecuteShell, AStepsOptionsStandInThePlaceOfSwitches) {
    const auto step = [](std::initializer_list<std::pair<std::size_t, std::int32_t>> options) {
        test::FakeCall call({u"", u"some command"});
        call.set_step_option(6, 0);
        for (const auto& [index, value] : options)
            call.set_step_option(index, value);
        return run(call, "\xFF");
    };
    EXPECT_EQ(step({}).settings.time_limit, 1200);
    EXPECT_EQ(step({}).result, u"<INVALID UTF8>");
    EXPECT_EQ(step({{2, 86'400}}).settings.time_limit, 5'184'000);
    EXPECT_EQ(step({{2, 0}}).result, u"-4239");
    EXPECT_EQ(step({{2, 86'401}}).result, u"-4239");
    EXPECT_EQ(step({{3, 0}}).result, u"0");
    EXPECT_EQ(step({{3, 1}, {4, 4200}}).result, u"\u00FF");
    EXPECT_EQ(step({{5, 2}}).settings.wait_after_exit, 120);
    EXPECT_EQ(step({{5, 0}}).settings.wait_after_exit, 0);
    EXPECT_FALSE(step({}).settings.show_window);
    EXPECT_TRUE(step({{6, 1}}).settings.show_window);
}

} // namespace
} // namespace vell::files
