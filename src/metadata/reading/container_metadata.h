// Reads the metadata of files whose blocks are found by their containers: WebP, Photoshop, HEIF,
// JPEG XL, and raw photographs that are no TIFF files.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

namespace vell::metadata {

// Appends what the request wants of the file, as of a JPEG: the tags, or the XMP packet where there
// are none or none are wanted, and the ICC profile. NothingFound when there is nothing of that, and
// for files of other formats.
Result<void> read_container(files::BufferedReader& file, const MetadataRequest& request,
                            MetadataText& text);

} // namespace vell::metadata
