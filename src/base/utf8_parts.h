// Where a text in UTF-8 may be parted.
#pragma once

#include <string_view>

namespace vell {

// Whether both parts are decoded as they are together: neither ends within a sequence, nor is what
// would then stand at a start a byte order mark.
bool can_be_parted(std::string_view before, std::string_view behind);

} // namespace vell
