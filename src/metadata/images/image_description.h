// The size, depth and resolution of an image, from its header.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/metadata/images/image_header.h"
#include "src/metadata/metadata_text.h"

namespace vell::metadata {

// NotSupported for a file of another format.
Result<ImageHeader> read_image_header(files::BufferedReader& file);

// The same in lines.
Result<void> describe_image(files::BufferedReader& file, MetadataText& text);

} // namespace vell::metadata
