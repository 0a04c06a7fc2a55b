// Dates as Exif has them (Exif 2.3, section 4.6.4).
#pragma once

#include <string_view>

namespace vell::metadata {

// "YYYY:MM:DD HH:MM:SS", or "YYYY:MM:DD" alone, of a day that the calendar has. What is not known
// is blank: a part, or all of the text with its colons; or it is zero, as cameras write whose clock
// was never set.
bool is_exif_date(std::string_view text, bool has_time);

} // namespace vell::metadata
