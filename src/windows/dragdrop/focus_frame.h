// The dotted rectangle around the zone under the cursor. Windows only.
#pragma once

#include "src/dragdrop/drop_zone.h"

#include <windows.h>

namespace vell::dragdrop {

void draw_focus_frame(HWND window, const Rectangle& frame);
// Lets the window paint what stood under the frame.
void erase_focus_frame(HWND window, const Rectangle& frame);

} // namespace vell::dragdrop
