// The command line of vellhost.
#pragma once

#include "console/fmwrapper/control.h"
#include "console/host/plugin_host.h"
#include "src/base/result.h"

#include <optional>
#include <string>
#include <vector>

namespace vell::console {

enum class Action {
    Statements, // typed at a prompt, or from standard input
    Evaluate,   // one calculation
    File,
    Step,
    List,
    Describe,
    Help,
};

struct CommandLine {
    Action action = Action::Statements;
    std::u16string subject;                     // calculation, file, step or name
    std::vector<std::u16string> step_arguments; // calculations; an empty one is left out
    PluginHostOptions host;
    std::optional<std::wstring> plugin; // otherwise the one beside this program
    std::optional<std::wstring> save;
    bool json = false;
    bool raw = false;
    bool echo = false;                     // statements before their results
    bool timing = false;                   // how long each took
    bool prompt = false;                   // as at a terminal, whatever the input is
    std::optional<std::wstring> reference; // the folder of the reference's pages
    bool check_leaks = false;
    std::uint32_t idle_count = 0; // messages after start-up and after each statement
    std::uint8_t idle_level = 0;
    bool window = false;             // shown, and held open after the statements
    std::int32_t window_scale = 100; // percent
    std::uint64_t fail_call = 0;
    StandInFailure failure = StandInFailure::Allocation;
};

// The error is a message.
Result<CommandLine, std::string> parse_command_line(const std::vector<std::u16string>& arguments);

} // namespace vell::console
