// Pages of the reference, which are Markdown, as text for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace vell::console {

// Headings stand alone in capitals, tables in columns whose cells are wrapped within `width`
// characters, examples indented; links keep their words only. What the page begins with for
// programs (between two lines "---") is left out.
std::string page_as_text(std::string_view markdown, std::size_t width);

// The part of a page under a heading of the second level that begins with `title`, with the
// heading; empty when there is none.
std::string_view section_of(std::string_view markdown, std::string_view title);

} // namespace vell::console
