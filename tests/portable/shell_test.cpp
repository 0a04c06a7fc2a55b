// Commands that exist only here: their output, their times and their settings.
#include "src/files/commands/running_command.h"
#include "src/files/commands/shell.h"
#include "tests/portable/answer_of.h"

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

std::string output_of(FakeCommand& command, const CommandSettings& settings) {
    CommandOutput output(settings.encoding);
    test::FakeCall call({});
    const Result<void> collected = collect_output(command, command, settings, output);
    if (collected)
        output.hand_over(call);
    return answer_of(call, collected);
}

// 60 ticks of the clock take two seconds.
constexpr CommandSettings short_limit{.time_limit = 60};

TEST(RunningCommand, IsGivenUpWhenItsTimeHasPassed) {
    FakeCommand in_time(2050);
    EXPECT_EQ(output_of(in_time, short_limit), "");
    FakeCommand silent(FakeCommand::never);
    EXPECT_EQ(output_of(silent, short_limit), "$$-4230");
    EXPECT_GE(silent.now, 2100u);
    EXPECT_LT(silent.now, 2120u);
    // Looks are ten milliseconds apart at most, and the end is seen at once.
    FakeCommand quick(25);
    EXPECT_EQ(output_of(quick, short_limit), "");
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
        EXPECT_EQ(output_of(then_silent, {.time_limit = limit}), "$$-4230");
        EXPECT_GE(then_silent.now, over);
        EXPECT_LT(then_silent.now, over + 20);
    }
    // What is read without a pause counts once.
    FakeCommand burst(FakeCommand::never, {{3000, std::string(100'000, 'x')}, {3001, "y"}});
    EXPECT_EQ(output_of(burst, {.time_limit = 150}), "$$-4230");
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
    EXPECT_EQ(output_of(closed, {}), "own left late");
    EXPECT_LE(closed.now, 1010u);
    FakeCommand held(100, writings, FakeCommand::never);
    EXPECT_EQ(output_of(held, {}), "own left late");
    EXPECT_GE(held.now, 8100u); // 240 ticks
    EXPECT_LT(held.now, 8120u);
    for (const Ticks wait : {Ticks{0}, Ticks{-60}}) {
        FakeCommand not_waited_for(100, writings, FakeCommand::never);
        EXPECT_EQ(output_of(not_waited_for, {.wait_after_exit = wait}), "own left ");
        EXPECT_EQ(not_waited_for.now, 100u);
    }
}

TEST(RunningCommand, ReportsTheSystemsFailures) {
    FakeCommand unknown_state(FakeCommand::never);
    unknown_state.fail_end_query = 3;
    EXPECT_EQ(output_of(unknown_state, {}), "$$-47");
    for (const std::uint64_t at : {50, 200}) { // before its end and after
        FakeCommand unreadable(100, {{at, "x"}}, 300);
        unreadable.fail_read = 1;
        EXPECT_EQ(output_of(unreadable, {}), "$$-108") << at;
    }
}

struct ShellRun {
    std::string answer;
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
    run.answer = answer_of(call, execute_shell(call, system));
    return run;
}

ShellRun run_function(const std::u16string& switches, const std::string& writes = "") {
    test::FakeCall call({switches, u"some command"});
    return run(call, writes);
}

TEST(ExecuteShell, TakesItsTimesFromTheSwitches) {
    EXPECT_EQ(run_function(u"").settings.time_limit, 1200);
    EXPECT_EQ(run_function(u"").settings.wait_after_exit, 240);
    const std::pair<const char16_t*, const char*> limits[] = {
        {u"-TimeoutSecs=86400", "5184000"},
        {u"-TimeoutSecs=86401", "$$-4239"},
        {u"-timeoutsecs 30 -ShowCommandWindow", "1800"},
        {u"-TimeoutSecs=0", "0"},
        {u"-TimeoutSecs=18446744073709551617", "$$-4239"},
        {u"-TimeoutSecs=soon", "$$-4239"},
        {u"-TimeoutTicks=5184000", "5184000"},
        {u"-TimeoutTicks=5184001", "$$-4239"},
        {u"-TimeoutTicks=5184001 -TimeoutSecs=2", "120"},
    };
    for (const auto& [switches, limit] : limits) {
        const ShellRun done = run_function(switches);
        const std::string taken = std::to_string(done.settings.time_limit);
        EXPECT_EQ(done.command.empty() ? done.answer : taken, limit) << utf8_from_utf16(switches);
    }
    EXPECT_EQ(run_function(u"-WaitAfterExitTicks=7").settings.wait_after_exit, 7);
    // Only the first 1000 characters count.
    const std::u16string far(984, u' ');
    EXPECT_EQ(run_function(far + u"-TimeoutTicks=77").settings.time_limit, 77);
    EXPECT_EQ(run_function(far + u"-TimeoutTicks=777").settings.time_limit, 77);
}

TEST(ExecuteShell, GivesTheOutputDecoded) {
    const std::string bytes = "caf\xC3\xA9\n\xFF\r\nend\r";
    EXPECT_EQ(run_function(u"", bytes).answer, "café\r\n<INVALID UTF8>\rend\r");
    EXPECT_EQ(run_function(u"-Encoding=BytesOnly", bytes).answer, "cafÃ©\r\nÿ\rend\r");
    const ShellRun started = run_function(u"-DontWaitOnResult -ShowCommandWindow", "unread");
    EXPECT_EQ(started.answer, "0");
    EXPECT_EQ(started.command, u"some command");
    EXPECT_TRUE(started.settings.show_window);
}

TEST(ExecuteShell, RefusesWhatItCannotRun) {
    test::FakeCall cut({u"", std::u16string(u"echo a\0b", 8)});
    EXPECT_EQ(run(cut).answer, "$$-50");
    // "cmd /c " counts, too.
    for (const auto& [length, answer] : {std::pair(8184, "0"), {8185, "$$-50"}}) {
        test::FakeCall call({u"-DontWaitOnResult", std::u16string(length, u'x')});
        EXPECT_EQ(run(call).answer, answer) << length;
    }
    test::FakeSystem without_commands;
    EXPECT_EQ(test::answer_of(execute_shell, without_commands, {u"", u"x"}), "$$-4221");
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
    EXPECT_EQ(step({}).answer, "<INVALID UTF8>");
    EXPECT_EQ(step({{2, 86'400}}).settings.time_limit, 5'184'000);
    EXPECT_EQ(step({{2, 0}}).answer, "$$-4239");
    EXPECT_EQ(step({{2, 86'401}}).answer, "$$-4239");
    EXPECT_EQ(step({{3, 0}}).answer, "0");
    EXPECT_EQ(step({{3, 1}, {4, 4200}}).answer, "ÿ");
    EXPECT_EQ(step({{5, 2}}).settings.wait_after_exit, 120);
    EXPECT_EQ(step({{5, 0}}).settings.wait_after_exit, 0);
    EXPECT_FALSE(step({}).settings.show_window);
    EXPECT_TRUE(step({{6, 1}}).settings.show_window);
}

TEST(ExecuteShell, HasNoWindowWhereNobodySeesIt) {
    struct CallWithoutUser : test::FakeCall {
        using FakeCall::FakeCall;
        bool can_ask_user() const override { return false; }
    };
    CallWithoutUser alone({u"-ShowCommandWindow", u"some command"});
    EXPECT_FALSE(run(alone).settings.show_window);
    alone.set_step_option(6, 1);
    EXPECT_FALSE(run(alone).settings.show_window);
}

} // namespace
} // namespace vell::files
