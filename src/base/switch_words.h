// Words of a switches text that look like switches.
#pragma once

#include <string_view>
#include <vector>

namespace vell {

// A dash and a letter behind a separator, up to the next separator or quote: "-SHA1" of "-SHA1, x".
// What stands in quotes is a value.
std::vector<std::string_view> switch_words(std::string_view switches);

} // namespace vell
