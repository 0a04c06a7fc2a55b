// Reads metadata chunks of a PNG file (PNG, third edition, section 5).
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace vell::metadata {

// Whether the file is read as PNG.
bool has_png_signature(std::string_view first_bytes);

// Gets a chunk of the wanted type: its length, with the file's position at its data. It may leave
// the position anywhere; its failure ends the walk.
using ChunkHandler = std::function<Result<void>(std::uint32_t length)>;

// Calls the handler for each chunk of that type behind the header chunk, up to the end of the file.
// WrongImageKind for a file that does not begin as a PNG does, those with Apple's CgBI chunk before
// the header included.
Result<void> walk_png_chunks(files::BufferedReader& file, std::string_view type,
                             const ChunkHandler& handler);

// The tags of the eXIf chunk; NothingFound when nothing of it is printed.
Result<void> read_png_exif(files::BufferedReader& file, const MetadataRequest& request,
                           MetadataText& text);

// A line for each tEXt chunk: its keyword, ": " and its text. BadArgument for an empty chunk.
Result<void> read_png_text(files::BufferedReader& file, MetadataText& text);

// The packet in the iTXt chunk of the keyword "XML:com.adobe.xmp", expanded where it is compressed.
// NothingFound when there is none.
Result<void> read_png_xmp(files::BufferedReader& file, TextEncoding source, MetadataText& text);

} // namespace vell::metadata
