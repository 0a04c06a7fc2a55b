#include "src/base/utf8_parts.h"

#include "src/base/utf8.h"

namespace vell {

bool can_be_parted(std::string_view before, std::string_view behind) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    return cut_sequence_at_end(before) == 0 && cut_sequence_at_start(behind) == 0 &&
           !behind.starts_with(byte_order_mark);
}

} // namespace vell
