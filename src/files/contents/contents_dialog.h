// A file of the user's choice.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ContentsDialog( switches ; { prompt ; { initialFolder } } ): shows the system's dialog to
// open a file, filtered by the types of VlFile_SetDefaultType, and gives the contents of the file
// selected, decoded as VlFile_GetContents does. DialogNotAllowed without a user, Cancelled.
Result<void> contents_dialog(params::Call& call, System& system);

} // namespace vell::files
