// Texts of a call on their way into a file.
#pragma once

#include "src/params/call.h"

#include <string>

namespace vell::files {

// Bytes of a text for a file's contents. A character that Mac Roman lacks is ParameterUnreadable;
// in the other encodings it is replaced.
Result<std::string> encode_contents(params::Call& call, std::u16string_view text,
                                    params::TextEncoding encoding);

// BadName for a path that Windows would quietly make into another one, by cutting dots or spaces
// off its end. For files that are to be made.
Result<void> check_new_name(const params::NativePath& path);

} // namespace vell::files
