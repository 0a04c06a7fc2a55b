// The function that runs commands.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ExecuteShell( switches ; shellCommand ): runs the command in the system's interpreter and
// gives what it wrote to its standard output. The first 1000 characters of the switches count:
// "-TimeoutSecs" (it wins) or "-TimeoutTicks" and "-WaitAfterExitTicks" with a number,
// "-ShowCommandWindow", "-DontWaitOnResult" (the result is "0" then) and "-Encoding=", UTF-8 unless
// given. In the step its options stand in their place.
//
// TimeLimitOutOfRange, also for a limit without a number; TimeLimitPassed, the command goes on
// then; SystemFolderUnknown; BadParameter for a command with a zero character, and for one that the
// interpreter has no room for; codes of the system.
Result<void> execute_shell(params::Call& call, System& system);

} // namespace vell::files
