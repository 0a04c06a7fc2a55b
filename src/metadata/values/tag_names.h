// Names of tags by their numbers, and numbers by names: those of Exif 3.0 (section 4.6), TIFF 6.0
// with its supplements, TIFF/EP and DNG 1.7. tag_table.h has the ones that tagged text shows, with
// what becomes of each; these are the others.
#pragma once

#include "src/metadata/tag_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// As the standard writes it; empty for a tag that none of them names.
std::string_view standard_name(TagFamily family, std::uint16_t tag);

// The name, or one of the form "Tag0xC4A5".
std::string name_of(TagFamily family, std::uint16_t tag);

// Letters A to Z compare without case. nullopt for a name that no tag has.
std::optional<std::uint16_t> tag_of(TagFamily family, std::string_view name);

} // namespace vell::metadata
