// VlFile_GetIcon: what the shell shows for a file.
#pragma once

#include "src/params/call.h"

namespace vell::pictures {

// VlFile_GetIcon( switches ; filePath ; { iconName } ): the icon of a file, a folder or a disk as a
// container with a square PNG picture, whose name is the file's when none is given.
//
// -MaxSize=N: its width and height, 16 to 256, 32 when not given. -ByExtension: the icon of files
// of that name, of which there need not be one.
//
// NumberOutOfRange for a size outside its range, the system's code when nothing is at the path,
// NoPicture where no icon can be had.
Result<void> get_icon(params::Call& call, System& system);

} // namespace vell::pictures
