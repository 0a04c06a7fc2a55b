// Reads a block of tags, which is a TIFF file or what follows the Exif identifier in other files,
// and renders the tags that it knows as tagged text: a section word with the tag's number, the
// value, and "##END" with the number, separated by carriage returns.
//
// Two readers give the same text but for a few deliberate differences (docs/decisions/metadata.md):
// one works on a file, the other on a block in memory.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/window.h"
#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::metadata {

// The file's position is that of the TIFF header. ShortRead when there is no header,
// CorruptStructure for offsets and types that cannot be, EndOfFile for a directory or value that
// the file lacks; the text keeps what was read before. In a directory below IFD0 these two only end
// the reading of that directory.
Result<void> read_tags(files::BufferedReader& file, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text);

Result<void> read_tags(std::string_view block, const ExifReadOptions& options, TextEncoding source,
                       MetadataText& text);

// The same of a block somewhere in a file, read as one in memory. Its first directory is of that
// kind; of one that is not wanted nothing is read.
Result<void> read_tags(const formats::Window& block, TagRoot root, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text);

// The raw bytes of the first entry of that number in IFD0; the file's position is that of the TIFF
// header. NothingFound when there is none, CorruptStructure for an unknown type or an offset before
// the end of the entry, ResourceTooLarge for a value of more than `most` bytes, EndOfFile for one
// that the file lacks; no more than the file holds is allocated.
Result<std::string> find_tag(files::BufferedReader& file, std::uint16_t tag,
                             std::uint64_t most = formats::longest_block);

} // namespace vell::metadata
