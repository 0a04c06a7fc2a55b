// Switches that a function does not have, by the pages of the reference.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

// The names of switches in the tables under a heading: what stands in the first cells as code.
std::vector<std::string> switches_in(std::string_view markdown, std::string_view heading);

// A line for each word of the switches text that looks like a switch ("-SHA256") and is none of
// `known`, with the nearest of them. What stands in quotes is a value.
std::vector<std::string> unknown_switches(std::string_view switches, std::string_view function,
                                          std::span<const std::string> known);

} // namespace vell::console
