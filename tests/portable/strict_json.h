// A judge of JSON that shares nothing with what writes it.
#pragma once

#include <string_view>

namespace vell::test {

// Whether a text is JSON as RFC 8259 has it, with no name twice in an object.
bool is_strict_json(std::string_view text);

} // namespace vell::test
