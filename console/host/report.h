// How results, errors and registrations are shown.
#pragma once

#include "console/calc/calc_error.h"
#include "console/calc/value.h"
#include "console/host/plugin_host.h"

#include <string>
#include <vector>

namespace vell::console {

// The number after "$$" at the start of a text result; 0 for any other value.
std::int64_t error_code_of(const Value& value);
bool is_error_result(const Value& value); // a text that begins with "$$"

// The plain form: UTF-8, the host's line ends as line feeds and one at the end; of a container its
// streams. A raw text is written as it is and nothing is added to it.
std::string plain_result(const Value& value, bool raw);
std::string json_result(std::size_t line, const Value& value);

// An error in a text of `name` (a file, or empty), with the line and a caret under the place.
std::string plain_error(const std::string& name, std::size_t line, std::u16string_view source,
                        const CalcError& error);
std::string json_error(std::size_t line, std::u16string_view source, const CalcError& error);

std::string registration_list(const PluginHost& host);
// Everything that is known about the functions and steps of a name; empty when there are none.
std::string description(const PluginHost& host, std::u16string_view name);
std::string script_request_text(const ScriptRequest& request);

// A line for each kind of host object that is left over; empty when there are none.
std::string leak_list();

} // namespace vell::console
