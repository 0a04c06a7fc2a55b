// What the shell and the user's settings tell.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetFileKind( switches ; filePath ): the description of the item's type, as the shell shows
// it. The system's code when nothing is at the path.
Result<void> get_file_kind(params::Call& call, System& system);

// VlFile_GetPreferredLanguages( switches ): the codes of the user's languages, such as "en-GB", the
// preferred one first, one a line; with "-GetFirstLanguage" only that one.
Result<void> get_preferred_languages(params::Call& call, System& system);

} // namespace vell::files
