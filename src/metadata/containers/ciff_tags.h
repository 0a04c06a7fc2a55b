// The records of Canon's older raw photographs as a block of tags, which they do not have.
#pragma once

#include "src/formats/camera/ciff.h"

#include <string>

namespace vell::metadata {

// A TIFF header, a first directory with size, camera, firmware, date and orientation, and an Exif
// directory with the date, the owner and the exposure, of what the records say. Empty where they
// say nothing of that.
formats::Read<std::string> tags_of_ciff(const formats::ciff::File& file);

} // namespace vell::metadata
