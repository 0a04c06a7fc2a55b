// Positions in decimal degrees.
#pragma once

#include "src/metadata/metadata_text.h"

namespace vell::metadata {

// Turns the degrees, minutes and seconds of the "##GPS" sections that the text holds into decimal
// degrees, negative for south and west.
void gps_to_decimal(MetadataText& text);

} // namespace vell::metadata
