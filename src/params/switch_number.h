// Numbers in switches, such as "-TimeoutSecs=20".
#pragma once

#include "src/params/switches.h"

#include <cstdint>
#include <optional>

namespace vell::params {

// The number behind the switch's name, with or without "=" between them; nullopt when there is
// none. Beyond 18 digits the value no longer grows.
std::optional<std::int64_t> switch_number(const SwitchSet& switches, std::string_view name);

} // namespace vell::params
