// Guesses what a mistyped name was meant to be.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace vell::console {

// The known name with the fewest differing letters, case disregarded; nullopt when none is close.
std::optional<std::u16string_view> closest_name(std::u16string_view name,
                                                std::span<const std::u16string_view> known);

} // namespace vell::console
