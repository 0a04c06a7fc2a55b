// What the shell shows of items. Windows only.
#pragma once

#include "src/system/pictures.h"

namespace vell::windows {

// See PictureSystem.
Result<pictures::Picture> shell_thumbnail(const params::NativePath& path, std::uint32_t size);
Result<pictures::Picture> shell_icon(const params::NativePath& path, pictures::IconOf what,
                                     std::uint32_t size);

} // namespace vell::windows
