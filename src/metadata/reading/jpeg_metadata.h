// Reads the metadata segments of a JPEG file (ITU-T T.81, annex B; the segments of applications).
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

namespace vell::metadata {

// Walks the segments from the file's start up to its scan and appends what the request wants of
// them: the tags of the Exif block, or the XMP packet where no tags are wanted, comments, and the
// ICC profile. Ends as soon as it has found as many items as are wanted.
//
// NotAJpeg without SOI at the start, SegmentTooShort, ShortRead, EndOfFile for a file that ends
// before its scan with nothing found, NothingFound.
Result<void> read_jpeg_segments(files::BufferedReader& file, const MetadataRequest& request,
                                MetadataText& text);

} // namespace vell::metadata
