// Texts of the host and texts as files on Windows have them.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ConvertFromFMText( switches ; text ): every line end, CR, LF or CR LF, becomes CR LF; with
// "-CRtoCRLF" or "-CRLFtoCR" that conversion is made instead. With "-Encoding=", the result is the
// bytes that a file of that encoding would hold, each as a character from U+0000 to U+00FF:
// what "-Encoding=BytesOnly" writes. ParameterUnreadable as for the functions that write files.
Result<void> convert_from_host_text(params::Call& call, System& system);

// VlFile_ConvertToFMText( switches ; text ): the way back. Every line end becomes CR, or the
// switches say otherwise; with "-Encoding=", the text's characters are bytes of that encoding.
// ParameterUnreadable when one of them is above U+00FF. What is not UTF-8 is read as by
// VlFile_GetContents.
Result<void> convert_to_host_text(params::Call& call, System& system);

} // namespace vell::files
