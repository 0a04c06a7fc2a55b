// The windows of the host as OLE and the window manager know them. Windows only.
#pragma once

#include "src/dragdrop/drop_windows.h"

namespace vell::windows {

dragdrop::DropWindows& drop_windows();

} // namespace vell::windows
