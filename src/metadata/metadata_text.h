// The text that describes a file's metadata.
#pragma once

#include "src/params/composed_text.h"

namespace vell::metadata {

using params::TextEncoding;
using MetadataText = params::ComposedText;

} // namespace vell::metadata
