// The chunks of a PNG file as places of blocks (PNG, third edition, section 11.3).
#pragma once

#include "src/metadata/writing/block_place.h"

namespace vell::metadata {

// Tags stand in eXIf, a packet in iTXt, image resources with IPTC and URL in a text chunk as other
// programs write and read it ("Raw profile type iptc"), the comment in the text chunk "Comment".
// A block in a chunk of another form that programs read is found, too, and what is written takes
// its place. New chunks stand before the image data.
//
// WrongImageKind for a file that does not begin as a PNG does, EndOfFile for one that ends before
// its image data. What is wrong behind their start ends the walk, and is copied.
Result<std::unique_ptr<BlockPlace>> find_png_place(files::BufferedReader& file,
                                                   const WantedBlock& wanted);

} // namespace vell::metadata
