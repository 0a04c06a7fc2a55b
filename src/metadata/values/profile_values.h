// ICC profiles and the headers of images as values.
#pragma once

#include "src/metadata/images/image_header.h"
#include "src/metadata/values/character_code.h"
#include "src/metadata/values/value.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vell::metadata {

// The fields of a profile's description by their names without blanks, a field's meaning as
// "ClassMeaning" behind it; its name, in "Descriptions" by languages where there are several; and
// its tags. Empty for what is no profile.
Members icc_members(std::string_view profile, TextEncoding otherwise, const TextDecoder& decoder);

Members image_members(const ImageHeader& header, std::uint64_t file_size);

// Every name that the two give.
std::vector<std::string> icc_names();
std::vector<std::string> image_names();

} // namespace vell::metadata
