// Functions that write a file anew with something put in or replaced. Both work in the file's own
// place when no destination is given, or the source itself; see rewrite for what a failure leaves.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_InsertContents( switches ; sourceFilePath ; destFilePath ; text ; { startPos } ): the text
// behind the first `startPos` bytes of the source. "-UTF8Charset" is UTF-8; otherwise encoding and
// line ends are those of VlFile_AppendToFile. EndOfFile for a position beyond the source's end,
// NumberOutOfRange for one above 2,147,483,647 in a source that is longer still.
Result<void> insert_contents(params::Call& call, System& system);

// VlFile_Substitute( switches ; sourceFile ; destinationFile ; search string ; replace string ):
// every occurrence of the search text, byte for byte in the encoding of the switches (UTF-8 when
// they name none) or of the step. "IgnoreCase" and the step's option let A to Z match a to z.
Result<void> substitute(params::Call& call, System& system);

} // namespace vell::files
