// The operating system that the plug-in runs on. Windows only.
#pragma once

#include "src/system/system.h"

namespace vell::windows {

System& system();

} // namespace vell::windows
