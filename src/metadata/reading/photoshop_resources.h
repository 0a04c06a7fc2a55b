// Finds image resources (Adobe Photoshop File Formats, "Image Resource Blocks") wherever they stand
// in a file.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/pattern_search.h"
#include "src/formats/photoshop.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

#include <cstddef>

namespace vell::metadata {

namespace photoshop = formats::photoshop;

// The most data of a resource without a name that end within the bytes which are looked at from its
// signature on.
inline constexpr std::size_t longest_readable_data =
    formats::PatternSearch::longest_look - photoshop::nameless_header_size;

// Appends the IPTC datasets of the file's first resource of that kind, or of each one where the
// request asks for all; the image URL where only that is wanted. NothingFound when there is none,
// ResourceTooLarge for one that does not end within the first 16,384 bytes from its signature on.
Result<void> read_photoshop_resources(files::BufferedReader& file, const MetadataRequest& request,
                                      MetadataText& text);

} // namespace vell::metadata
