// Waiting for the output of a command.
#pragma once

#include "src/files/commands/command_output.h"
#include "src/system/clock.h"
#include "src/system/commands.h"

namespace vell::files {

// Reads the output until the command has ended and, for wait_after_exit at most, until nobody else
// writes to it. TimeLimitPassed; output moves the limit one second on, so that a command which
// keeps writing is not cut off, but behind its last output there is never more than the limit, or a
// second where the limit is shorter.
Result<void> collect_output(RunningCommand& command, Clock& clock, const CommandSettings& settings,
                            CommandOutput& output);

} // namespace vell::files
