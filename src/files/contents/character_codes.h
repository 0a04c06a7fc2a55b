// Characters by their numbers.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_AsciiValueToText( switches ; AsciiValues ; { separator } ): the characters of the numbers
// in a text, in which whatever is no digit separates them, with the separator between them.
//
// A number is a Unicode code point; with "-Encoding=" it is a byte of that encoding, or, in UTF-8
// and the encodings of East Asia, all bytes of a character as one number (up to 32 bits). Without a
// separator, bytes that stand side by side are read together, so a character may be given as
// several numbers. NumberOutOfRange for 0, for what is no code point, and for more bytes than that;
// InvalidUtf8.
Result<void> ascii_value_to_text(params::Call& call, System& system);

} // namespace vell::files
