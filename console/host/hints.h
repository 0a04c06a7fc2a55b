// What people who know other systems stumble over.
#pragma once

#include "console/calc/value.h"

#include <string>
#include <string_view>

namespace vell::console {

// A line for a statement whose result is an error: of a path that begins with "/", whose first slash
// does not count, so that the rest is looked for in the current folder. Empty when there is nothing
// to say.
std::string hint_on(std::u16string_view statement, const Value& result);

} // namespace vell::console
