// The tags of a TIFF file as places of blocks (TIFF 6.0; TIFF/EP; DNG).
#pragma once

#include "src/metadata/writing/block_place.h"

namespace vell::metadata {

// A packet stands in tag 700 of the first directory, IPTC in 33723, the image URL among the image
// resources of 34377, where IPTC is kept up as well if it is there. NotSupported for a comment,
// which the format has no place for. What is new stands behind the end of the file.
//
// NotAJpeg for raw photographs but DNG: their makers' programs know them only as they are.
// CorruptStructure and EndOfFile for directories that cannot be read, EndOfFile for a picture that
// is cut off.
Result<std::unique_ptr<BlockPlace>> find_tiff_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted);

} // namespace vell::metadata
