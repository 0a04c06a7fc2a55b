// Where the host's own things are.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetPathTo( switches ; desiredFilename ; fileSize ): a native path, by the first of these
// words in the switches: "currentFileName", the solution file from which the call comes;
// "currentApplication", the host's program; "currentAppFolder", its folder, which ends with "\".
// "-FileMakerPathFormat" gives the host's form. The other parameters are not used. BadParameter
// without a word; NotFound when the solution file is not on a disk of this machine, since another
// machine hosts it.
Result<void> get_path_to(params::Call& call, System& system);

} // namespace vell::files
