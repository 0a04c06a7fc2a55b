// Texts of a call on their way into a file.
#pragma once

#include "src/params/call.h"

#include <string>

namespace vell::files {

// Bytes of a text for a file's contents. A character that Mac Roman lacks is ParameterUnreadable;
// in the other encodings it is replaced.
Result<std::string> encode_contents(params::Call& call, std::u16string_view text,
                                    params::TextEncoding encoding);

} // namespace vell::files
