// Shell link files as MS-SHLLINK lays them out: what the system's own objects do not tell or set.
#pragma once

#include "src/formats/damage.h"

#include <string>
#include <string_view>

namespace vell::formats {

// What a link file says of its target beside the path.
struct LinkFile {
    bool leads_to_folder = false;   // as it was when the link was made
    std::u16string relative_target; // seen from the link's folder; empty when it has none
};

// Corrupt for bytes that are no shell link, or end in the midst of one.
Read<LinkFile> read_link_file(std::string_view bytes);

// The link with another relative path, or with one if it had none. TooLarge for one that is too
// long for a link, Corrupt as above.
Read<std::string> with_relative_target(std::string_view bytes, std::u16string_view relative);

} // namespace vell::formats
