// Items that are held, as far as a policy allows.
#pragma once

#include "src/policy/path_guard.h"

namespace vell::policy {

// A held item at a place that has been checked: nothing below it is reached by a link, so what is
// done there is checked by its path alone. The guard outlives it.
std::unique_ptr<files::HeldItem> guarded(std::unique_ptr<files::HeldItem> item,
                                         std::u16string path, PathGuard& guard);

} // namespace vell::policy
