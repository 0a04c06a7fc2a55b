// Drag and drop, with the host behind it.
#pragma once

#include "src/params/call.h"

namespace vell::host {

Result<void> drag_and_drop(params::Call& call, System& system);
Result<void> stop_drop_handlers(params::Call& call, System& system);

// What the idle and the shutdown message bring to drag and drop.
void idle_drops();
void shut_down_drops();

} // namespace vell::host
