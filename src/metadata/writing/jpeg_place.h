// The segments of a JPEG file as places of blocks.
#pragma once

#include "src/metadata/writing/block_place.h"

namespace vell::metadata {

// The place of find_segment_place, in the segments that the kind, and for XMP the text, belongs to.
Result<std::unique_ptr<BlockPlace>> find_jpeg_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted);

} // namespace vell::metadata
