// Where the host's own things are.
#pragma once

#include "src/params/call.h"

#include <functional>
#include <string>

namespace vell::files {

// The path of the program that runs, which is the host.
using ProgramPath = std::function<Result<std::u16string>()>;
Result<std::u16string> program_path(); // Windows only

// VlFile_GetPathTo( switches ; desiredFilename ; fileSize ): a native path, by the first of these
// words in the switches: "currentFileName", the solution file from which the call comes;
// "currentApplication", the host's program; "currentAppFolder", its folder, which ends with "\".
// "-FileMakerPathFormat" gives the host's form. The other parameters are not used. BadParameter
// without a word; NotFound when the solution file is not on a disk of this machine, since another
// machine hosts it.
Result<void> get_path_to(params::Call& call, const ProgramPath& program);
inline Result<void> get_path_to(params::Call& call) {
    return get_path_to(call, program_path);
}

} // namespace vell::files
