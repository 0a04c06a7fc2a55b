// Functions that read and write the contents of files.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

namespace vell::files {

// VlFile_GetContents( switches ; filePath { ; start ; { size } } ): bytes `start` (from 0) to
// `start` + `size` of the file, decoded with the encoding of the switches, native when they name
// none. `size` 0 means up to the end. EndOfFile when a file with contents has no byte `start`.
//
// Bytes that are not UTF-8 though "-Encoding=UTF8" says so are decoded as native text, behind a
// note that says so; a character that the range cuts at either end is replaced by a note of its
// own.
Result<void> get_contents(params::Call& call, System& system);

// The conversion that "-ConvertToFMPLinebreaks" asks of the functions that read.
params::LineEndings reading_line_endings(const params::SwitchSet& switches);

// The whole of a file as the call's result, decoded as described above.
Result<void> give_contents(params::Call& call, FileSystem& files, const NativePath& path,
                           params::TextEncoding encoding, params::LineEndings line_endings);

// Bytes as the call's result, decoded as the whole of a file.
void give_bytes(params::Call& call, std::string bytes, params::TextEncoding encoding);

} // namespace vell::files
