// The blocks that raw photographs of Minolta begin with.
#pragma once

#include "src/formats/window.h"

namespace vell::formats::mrw {

// The block of tags, which begins with a TIFF header. Absent in a file without it.
Read<Window> find_tags(Window file);

} // namespace vell::formats::mrw
