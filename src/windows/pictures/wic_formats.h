// The pixel formats of Windows' imaging component. Windows only.
#pragma once

#include "src/pictures/decoding/pixel_format.h"

#include <optional>

#include <windows.h>

namespace vell::windows {

// How such pixels are converted; nullopt for those that Windows is left to convert.
std::optional<pictures::PixelFormat> pixel_format(REFGUID wic_format);

} // namespace vell::windows
