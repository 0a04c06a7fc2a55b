// Ways between places.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vell::files {

// The way from a folder to an item, such as "..\other\file.txt" or ".\file.txt", both given by full
// paths. nullopt when they have different roots.
std::optional<std::u16string> relative_path(std::u16string_view folder, std::u16string_view item);

} // namespace vell::files
