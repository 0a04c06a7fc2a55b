// Types of files, as users list them.
#pragma once

#include <string>
#include <string_view>

namespace vell::files {

// Patterns for a list of file types that are separated by blanks, commas, semicolons or line ends:
// "txt", ".txt" and "*.txt" all give "*.txt"; joined by semicolons, as the dialog takes them.
std::u16string file_patterns(std::u16string_view types);

} // namespace vell::files
