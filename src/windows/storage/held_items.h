// Items held by open handles. Windows only.
#pragma once

#include "src/system/held_item.h"

namespace vell::windows {

Result<std::unique_ptr<files::HeldItem>> hold_item(const files::NativePath& path,
                                                   files::FollowLink follow);

} // namespace vell::windows
