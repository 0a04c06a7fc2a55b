// The image resources in one segment of a JPEG file (Adobe Photoshop File Formats, "Image Resource
// Blocks").
#pragma once

#include "src/base/result.h"
#include "src/metadata/reading/photoshop_resources.h"

#include <string>
#include <string_view>

namespace vell::metadata {

// The data of the first resource of that kind; empty when there is none.
std::string_view find_resource(std::string_view block, photoshop::ResourceId id);

// The block with those data as its only resource of that kind: in the place of the first one, or
// behind all others. Without data the block has none of that kind. All other bytes stay as they
// are, also those of a resource that goes on in another segment. ResourceTooLarge for data that the
// readers would refuse.
Result<std::string> with_resource(std::string_view block, photoshop::ResourceId id,
                                  std::string_view data);

} // namespace vell::metadata
