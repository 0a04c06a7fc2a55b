// Shell link files as MS-SHLLINK lays them out: what the system's own objects do not tell or set.
#pragma once

#include "src/base/result.h"

#include <optional>
#include <string>
#include <string_view>

namespace vell::files {

// What a link file says of its target beside the path.
struct LinkFile {
    bool leads_to_folder = false;   // as it was when the link was made
    std::u16string relative_target; // seen from the link's folder; empty when it has none
};

// CorruptStructure for bytes that are no shell link, or end in the midst of one.
Result<LinkFile> read_link_file(std::string_view bytes);

// The link with another relative path, or with one if it had none.
Result<std::string> with_relative_target(std::string_view bytes, std::u16string_view relative);

// The way from a folder to an item, such as "..\other\file.txt" or ".\file.txt", both given by full
// paths. nullopt when they have different roots.
std::optional<std::u16string> relative_path(std::u16string_view folder, std::u16string_view item);

} // namespace vell::files
