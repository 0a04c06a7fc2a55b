// Reads metadata chunks of a PNG file (PNG, third edition, section 5).
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

namespace vell::metadata {

// All of these: WrongImageKind for a file that does not begin as a PNG does.

// The tags of the eXIf chunk; NothingFound when nothing of it is printed.
Result<void> read_png_exif(files::BufferedReader& file, const MetadataRequest& request,
                           MetadataText& text);

// A line for each tEXt chunk: its keyword, ": " and its text. BadArgument for an empty chunk.
Result<void> read_png_text(files::BufferedReader& file, MetadataText& text);

// The packet in the iTXt chunk of the keyword "XML:com.adobe.xmp", expanded where it is compressed.
// NothingFound when there is none.
Result<void> read_png_xmp(files::BufferedReader& file, TextEncoding source, MetadataText& text);

} // namespace vell::metadata
