// What vellhost says about itself.
#pragma once

#include <string_view>

namespace vell::console {

extern const std::string_view help_page;        // --help
extern const std::string_view interactive_help; // help at the prompt

} // namespace vell::console
