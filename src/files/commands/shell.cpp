#include "src/files/commands/shell.h"

#include "src/files/commands/running_command.h"
#include "src/params/switch_number.h"
#include "src/system/system.h"

#include <algorithm>

namespace vell::files {
namespace {

using params::Call;
using params::switch_number;
using params::SwitchSet;

constexpr std::size_t switches_read = 1000;
constexpr std::size_t longest_command_line = 8191; // that the interpreter takes
constexpr Ticks longest_seconds = 86'400;
constexpr Ticks longest_ticks = longest_seconds * ticks_per_second;

// Indexes of the step's options.
constexpr std::size_t timeout_option = 2;
constexpr std::size_t wait_option = 3;
constexpr std::size_t encoding_option = 4;
constexpr std::size_t wait_after_exit_option = 5;
constexpr std::size_t show_window_option = 6;

Result<Ticks> time_limit(const SwitchSet& switches, std::int32_t step_seconds) {
    if (step_seconds != Call::not_given) {
        if (step_seconds < 1 || step_seconds > longest_seconds)
            return Failure{ErrorCode::TimeLimitOutOfRange};
        return step_seconds * ticks_per_second;
    }
    const bool in_seconds = switches.has("-TimeoutSecs");
    if (!in_seconds && !switches.has("-TimeoutTicks"))
        return CommandSettings{}.time_limit;
    const auto number = switch_number(switches, in_seconds ? "-TimeoutSecs" : "-TimeoutTicks");
    if (!number || *number > (in_seconds ? longest_seconds : longest_ticks))
        return Failure{ErrorCode::TimeLimitOutOfRange};
    return in_seconds ? *number * ticks_per_second : *number;
}

Ticks wait_after_exit(const SwitchSet& switches, std::int32_t step_seconds) {
    if (step_seconds != Call::not_given)
        return step_seconds >= 1 ? step_seconds * ticks_per_second : step_seconds;
    const Ticks ticks =
        switch_number(switches, "-WaitAfterExitTicks").value_or(CommandSettings{}.wait_after_exit);
    return std::min(ticks, longest_ticks); // keeps sums of ticks in range
}

Result<CommandSettings> settings_of(Call& call) {
    const SwitchSet switches(call.switches().text().substr(0, switches_read));
    CommandSettings settings;
    settings.time_limit = VELL_TRY(time_limit(switches, call.step_option(timeout_option)));
    settings.wait_after_exit = wait_after_exit(switches, call.step_option(wait_after_exit_option));
    settings.show_window =
        call.option(show_window_option, switches, "-ShowCommandWindow") && call.can_ask_user();
    const std::int32_t wait = call.step_option(wait_option);
    settings.wait_on_result =
        wait == Call::not_given ? !switches.has("-DontWaitOnResult") : wait != 0;
    settings.encoding = params::contents_encoding_of(switches, settings.encoding,
                                                     call.step_option(encoding_option));
    return settings;
}

} // namespace

Result<void> execute_shell(Call& call, System& system) {
    const CommandSettings settings = VELL_TRY(settings_of(call));
    const std::u16string command = call.text(1);
    if (command.find(u'\0') != std::u16string::npos)
        return Failure{ErrorCode::BadParameter}; // the system would run what stands before it
    if (interpreter_call.size() + command.size() > longest_command_line)
        return Failure{ErrorCode::BadParameter}; // it would run nothing and print nothing
    const std::unique_ptr<RunningCommand> running =
        VELL_TRY(system.commands().start(command, settings));
    if (!settings.wait_on_result) {
        call.set_done();
        return {};
    }
    CommandOutput output(settings.encoding);
    VELL_TRY(collect_output(*running, system.clock(), settings, output));
    output.hand_over(call);
    return {};
}

} // namespace vell::files
