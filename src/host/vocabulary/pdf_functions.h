// The functions that read PDF files, on a stack that holds what such files
// nest.
#pragma once

#include "src/params/call.h"

namespace vell::host {

Result<void> get_as_plain_text(params::Call& call, System& system);

// VlFile_GetContents, which "-ExperimentalPDFToPlainText" makes the function above.
Result<void> get_contents(params::Call& call, System& system);

} // namespace vell::host
