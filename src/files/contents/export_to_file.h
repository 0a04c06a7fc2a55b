// Containers and texts as files.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ExportToFile( switches ; source ; filepath ): the main stream of a container byte for
// byte, or a text in the encoding of the switches, UTF-8 when they name none. AlreadyExists for a
// target that exists, unless "-OverwriteExisting" says that it is to be replaced.
//
// All of it is written to a new file beside the target first, which then takes the target's place,
// with its permissions and attributes: whatever fails on the way, the old target is whole. Busy,
// and nothing changed, for one that is read-only.
Result<void> export_to_file(params::Call& call, System& system);

} // namespace vell::files
