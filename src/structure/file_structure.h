// VlFile_GetFileStructure, and the boxes of movies for VlFile_GetMetaData.
#pragma once

#include "src/params/call.h"
#include "src/structure/parts.h"

namespace vell::structure {

// VlFile_GetFileStructure( switches ; filePath ): one line for each part of a movie, image, PDF
// file or archive. "-Format=XML": one element for each. "-Verbose": also the values of small parts.
// NotSupported for a file of no such format, CorruptStructure for an archive that cannot be read.
Result<void> get_file_structure(params::Call& call, System& system);

// Appends the boxes of a movie, or of images in boxes. NotAMovie for another file.
Result<void> append_boxes(ByteSource& file, ReportStyle style, params::ComposedText& text);

} // namespace vell::structure
