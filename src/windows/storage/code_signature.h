// Signatures in program files. Windows only.
#pragma once

#include "src/system/item_properties.h"

namespace vell::windows {

// The system's code for a file that cannot be read.
Result<files::CodeSignature> code_signature(const files::NativePath& path);

} // namespace vell::windows
