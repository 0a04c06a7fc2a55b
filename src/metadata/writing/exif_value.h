// Values of tags from their texts.
#pragma once

#include "src/formats/tiff/records.h"
#include "src/metadata/tag_table.h"
#include "src/metadata/writing/text_store.h"

namespace vell::metadata {

// A tag, and how its block stores numbers.
struct TagTarget {
    TagFamily family;
    std::uint16_t tag;
    FieldType type;
    ByteOrder order;
};

// The bytes for a text that the tag readers would render again, but for XPTitle to XPSubject, which
// are little-endian in every block, as other programs have them. Numbers of an array stand on lines
// of their own; a decimal comma is taken for a point, and a number may have the unit that people
// write with its tag, such as "1/250 s", "50 mm" or "f/2.8". BadParameter for a text that the type
// cannot hold, and for dates in another form than Exif's.
Result<std::string> exif_value(std::string_view text, const TagTarget& target,
                               const TextStore& store);

// Whether the tag holds a latitude or longitude (with its reference in the tag before).
bool is_position(const TagTarget& target);

// Signed decimal degrees as the degrees, minutes and seconds of a position; the sign is left to the
// reference. nullopt for a text that is not one decimal number.
std::optional<std::string> position_from_degrees(std::string_view text, ByteOrder order);

} // namespace vell::metadata
