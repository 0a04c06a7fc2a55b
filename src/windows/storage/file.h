// Files over handles that were opened elsewhere. Windows only.
#pragma once

#include "src/system/held_item.h"
#include "src/windows/handle.h"

#include <memory>

namespace vell::windows {

std::unique_ptr<files::HeldFile> file_over(UniqueFile handle);

} // namespace vell::windows
