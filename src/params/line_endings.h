// Conversions between carriage return (13), line feed (10) and the two together.
#pragma once

#include <cstdint>
#include <string>

namespace vell::params {

class SwitchSet;

// Of the host's texts: lists of paths and names have one behind or between their lines.
inline constexpr char16_t line_end = u'\r';

enum class LineEndings : std::int32_t {
    Keep = 0,
    CrToCrLf = 1, // a line feed after every carriage return
    CrLfToCr = 2, // the line feed of every pair removed
    LfToCrLf = 3, // a carriage return before every line feed
    Host = 9,     // mode 2, then mode 3
    LogFile = 10, // mode 2, then mode 3, then mode 1
};

// Each mode, those made of several too, does just what its steps do one after the other: mode 10
// turns a lone line feed into CR LF LF. Linear in the text's length.
template <typename Char>
void convert_line_endings(std::basic_string<Char>& text, LineEndings mode);

// The mode of a call: a script step's "Line endings" value, or the switches "-CRtoCRLF" and
// "-CRLFtoCR" (the first wins) when `list_value` is Call::not_given.
LineEndings line_endings_of(const SwitchSet& switches, std::int32_t list_value);

} // namespace vell::params
