// What a name is searched by.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::files {

enum class NameExtent : std::uint8_t {
    Part,  // the text may stand anywhere in the name
    Whole, // it is the name
};

// A text in which "*" stands for any characters or none, "?" for exactly one. Text and names are
// compared as they stand, so whoever wants letter case ignored gives both folded.
class NamePattern {
  public:
    // A text that begins or ends with "*" is always about the whole name.
    NamePattern(std::u16string_view text, NameExtent extent);

    // In time proportional to the pattern's length times the name's, at most.
    bool matches(std::u16string_view name) const;

  private:
    std::u16string pattern_; // with "*" at both ends where the text is a part of the name
    std::u16string plain_;   // what the name contains, where that is all there is to it
    std::size_t least_ = 0;  // the shortest name that can match
};

} // namespace vell::files
