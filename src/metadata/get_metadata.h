// Reads the metadata of a file.
#pragma once

#include "src/files/contents/buffered_reader.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"
#include "src/params/call.h"

namespace vell::metadata {

// VlFile_GetMetaData( switches ; filePath ): what the switches ask for, as one text. BadParameter
// when they ask for nothing, NothingFound when the file has nothing of a kind that they ask for.
// With "-IsValidMovie" every error becomes the result 0.
Result<void> get_metadata(params::Call& call, System& system);

// Appends what the request wants of an image: IPTC datasets or the image URL, then what its
// segments, chunks or tags hold, then its description. Ends at the first error; what was appended
// before stays.
Result<void> read_image_metadata(files::BufferedReader& file, const MetadataRequest& request,
                                 MetadataText& text);

} // namespace vell::metadata
