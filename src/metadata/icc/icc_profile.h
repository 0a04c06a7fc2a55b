// Describes an ICC profile (ICC.1:2010, profile version 4, and ICC.1:2001, version 2).
#pragma once

#include "src/base/result.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"

#include <string_view>

namespace vell::metadata {

// Appends what the request's selector asks for: the header's fields and the list of tags, the
// description, or the description in each of its languages.
Result<void> describe_icc_profile(std::string_view profile, const MetadataRequest& request,
                                  MetadataText& text);

} // namespace vell::metadata
