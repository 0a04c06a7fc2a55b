// Whole folders by the shell's file operation; see Desktop. Windows only.
#pragma once

#include "src/system/desktop.h"

namespace vell::windows {

bool has_shell_operations();
files::ShellOutcome shell_copy(const files::NativePath& folder, const files::NativePath& target,
                               files::ShellMessages messages);
files::ShellOutcome shell_delete(const files::NativePath& folder, void* owner,
                                 files::ShellMessages messages);

} // namespace vell::windows
