// The final path of what a handle leads to. Windows only.
#pragma once

#include "src/windows/handle.h"

#include <string>

namespace vell::windows {

// See FinalPaths::of; empty where the system tells none.
std::u16string final_path_of(HANDLE item);

} // namespace vell::windows
