// The datasets of an IPTC block as values.
#pragma once

#include "src/metadata/values/character_code.h"
#include "src/metadata/values/value.h"

#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// By their names (iptc_names.h), those without one as "Dataset2_221". A dataset that may repeat, or
// does, is an array. Texts are UTF-8 where the envelope says so or all of them are; otherwise they
// are read in that encoding.
Members iptc_members(std::string_view block, TextEncoding otherwise, const TextDecoder& decoder);

// What "-Readable" puts in the place of a dataset's value in tagged text; nullopt where it is the
// same.
std::optional<std::string> readable_dataset(std::uint8_t number, std::string_view value);

} // namespace vell::metadata
