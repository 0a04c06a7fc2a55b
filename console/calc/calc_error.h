// An error in a text that a person wrote: what is wrong, and where.
#pragma once

#include "src/base/result.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vell::console {

struct CalcError {
    std::string message;      // UTF-8, one line, no full stop
    std::size_t position = 0; // UTF-16 units from the start of the text
    std::size_t length = 1;   // units that the caret line marks; at least one is shown
};

template <typename T>
using CalcResult = Result<T, CalcError>;

// Line and column, both counted from 1; a surrogate pair is one column.
struct SourcePlace {
    std::size_t line = 1;
    std::size_t column = 1;
    std::u16string_view line_text;
    std::size_t offset_in_line = 0; // UTF-16 units
};

SourcePlace locate(std::u16string_view source, std::size_t position);

// The source line with a line of carets under the place, both ending in a line feed.
std::string caret_display(std::u16string_view source, const CalcError& error);

} // namespace vell::console
