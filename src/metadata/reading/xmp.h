// Finds XMP packets (ISO 16684-1 and XMP part 3: where they stand in JPEG and TIFF files, and how
// to look for them in any other).
//
// Each packet comes with its header made readable: the byte-order mark in it is told by its bytes.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/window.h"
#include "src/metadata/metadata_text.h"

#include <cstdint>
#include <string_view>

namespace vell::metadata {

// The content of an APP1 segment: the identifier as a line, then the packet in the source encoding.
// NotXmp for a segment of another kind, ShortRead.
Result<void> read_app1_xmp(formats::Window content, TextEncoding source, MetadataText& text);

// The value of tag 700 of the first IFD. NothingFound when there is none.
Result<void> read_tiff_xmp(files::BufferedReader& file, TextEncoding source, MetadataText& text);

// The first whole packet between its processing instructions, wherever it stands in the file.
// NothingFound when there is none.
Result<void> scan_for_xmp(files::BufferedReader& file, TextEncoding source, MetadataText& text);

// A packet from a place where it is always UTF-8; one that is not is read in the source encoding.
void append_xmp_packet(std::string_view packet, TextEncoding source, MetadataText& text);

// Makes the first packet header in the text readable; false where there is none.
bool fix_packet_header(MetadataText& text);

} // namespace vell::metadata
