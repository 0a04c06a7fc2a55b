// The chunks of a WebP file as places of blocks (WebP Container Specification).
#pragma once

#include "src/metadata/writing/block_place.h"

namespace vell::metadata {

// Tags stand in "EXIF", a packet in "XMP ", both behind the image data; VP8X says that they are
// there, and is made where a file has none. NotSupported for other kinds, which the format has no
// place for.
//
// NotAJpeg for a RIFF file of another form, EndOfFile for one that is cut off, CorruptStructure for
// one that does not say how large its canvas is.
Result<std::unique_ptr<BlockPlace>> find_webp_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted);

} // namespace vell::metadata
