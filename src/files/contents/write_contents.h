// Functions that put a text into an existing file.
//
// Encodings are those of the switches, native when they name none, or a step's option; line ends
// are converted before encoding. The file must exist. What goes beyond its old contents is written
// first: a failure so far, as on a full disk, leaves the file as it was. A device that fails while
// the old contents themselves are replaced leaves the new ones up to there and the old ones behind.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_SetContents( switches ; text ), VlFile_AppendContents( switches ; text ): replace or
// extend the contents of the default file. BadParameter when there is none.
Result<void> set_contents(params::Call& call, System& system);
Result<void> append_contents(params::Call& call, System& system);

// VlFile_SetContentsOfFile( switches ; filePath ; text ),
// VlFile_AppendToFile( switches ; filePath ; text ): the same for any file.
Result<void> set_contents_of_file(params::Call& call, System& system);
Result<void> append_to_file(params::Call& call, System& system);

} // namespace vell::files
