// Tagged text, as the readers of metadata give it and a user hands it back: sections of a line with
// a word and a number, the value, and a line with "##END" and the same number.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vell::metadata {

enum class SectionKind : std::uint8_t {
    Exif, // of IFD0 or the Exif IFD
    Gps,
    Interoperability,
    Iptc,
    Comment, // has no number
};

struct TaggedSection {
    SectionKind kind;
    std::uint16_t number;
    std::string_view value; // refers to the text
};

// The sections in the text's order. Lines may end with CR, LF or CRLF. BadParameter for a section
// without an end, a number out of range, and anything between sections that the readers do not put
// there. Linear in the text.
Result<std::vector<TaggedSection>> parse_tagged_text(std::string_view text);

} // namespace vell::metadata
