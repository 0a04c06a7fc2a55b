// Makes XMP packets (ISO 16684-1, section 7.3).
#pragma once

#include "src/base/result.h"
#include "src/metadata/writing/text_store.h"

#include <string>
#include <string_view>

namespace vell::metadata {

// A text with the name of the segments that it belongs to.
struct XmpText {
    std::string_view identifier;
    std::string_view text;

    bool is_packet_segment() const;
};

// Whether the text is that of no packet at all.
bool is_blank_xmp(std::string_view text);

// The readers put the identifier of the segment on a line before its packet. A text without such a
// line belongs to the segments that hold packets.
XmpText split_xmp_text(std::string_view text);

// The packet for a text that is a packet already, as the readers give it, or the body of one. A
// body gets the packet's header, two kilobytes of room for later changes (less where they would
// exceed `most_bytes`) and the trailer. Empty for a text that is.
//
// Without an encoding of the store's own the packet is UTF-8: the text natively stored where that
// gives UTF-8, since this is how a packet reads natively, otherwise the text itself. A text that is
// how the existing packet reads keeps that packet, whatever its encoding. Texts of other segments,
// such as those of extended XMP, get no header.
Result<std::string> write_xmp(const XmpText& xmp, std::string_view existing, const TextStore& store,
                              std::size_t most_bytes);

} // namespace vell::metadata
