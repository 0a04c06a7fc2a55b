// Guesses what a mistyped name was meant to be.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace vell::console {

// The known name that is meant, case disregarded: the one that lacks its first word ("GetContents"
// for "VlFile_GetContents"), the shortest that the name begins, or the one with the fewest
// differing letters; nullopt when none is close.
std::optional<std::u16string_view> closest_name(std::u16string_view name,
                                                std::span<const std::u16string_view> known);

} // namespace vell::console
