// The values that people and programs attach to a movie, of every kind that its boxes have room
// for; one walk gives them all. Values stay in the file until they are asked for.
#pragma once

#include "src/formats/isobmff/boxes.h"
#include "src/formats/isobmff/movie.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vell::formats::isobmff {

enum class ItemSource : std::uint8_t {
    Itunes,   // "ilst" under a "mdir" handler: typed values named by four characters
    Keys,     // "ilst" whose items are numbered after "keys" (QuickTime File Format, "Metadata")
    UserText, // "udta": international text, its type beginning with a copyright sign
    UserData, // "udta": anything else
    Asset,    // "udta": texts of 3GPP (TS 26.244, section 8) and ISO/IEC 14496-12, section 8.10.2
    Location, // "udta": 3GPP's "loci"
    Xmp,      // a "uuid" box of the file or "XMP_" in "udta"
    Skipped,  // a full box whose version is too high; it has no value
};

// The types of values in "ilst" (QuickTime File Format, "Well-known types").
enum class ValueType : std::uint32_t {
    Implicit = 0, // told by the item
    Utf8 = 1,
    Utf16 = 2,
    ShiftJis = 3,
    Jpeg = 13,
    Png = 14,
    SignedInteger = 21, // of as many bytes as the value has
    UnsignedInteger = 22,
    Float32 = 23,
    Float64 = 24,
    Bmp = 27,
    MetadataBox = 28,
};

struct MetadataItem {
    ItemSource source;
    FourCc type;                            // of its box; for keys their namespace
    std::string name;                       // of a key, or "mean:name" of a free one
    std::size_t track = 0;                  // from 1 on; 0 for the whole movie
    ValueType value_type = ValueType::Utf8; // of what has a type
    bool has_language = false;
    std::uint16_t language = 0; // see Language
    Window value;

    // Values beyond are not read as such: cover pictures, mostly.
    static constexpr std::uint64_t longest_value = 1U << 20U;
};

// What is done with each; a fault ends the walk.
using ItemVisitor = std::function<Read<void>(const MetadataItem&)>;

// Those of the file around the movie, of the movie, and of its tracks in their order. What is
// damaged is passed over. Faults of the source are passed on.
Read<void> each_metadata_item(const MovieFile& movie, const ItemVisitor& visitor);

// The fields of "loci" (TS 26.244, section 8.10): degrees, and metres above the sea.
struct LocationInformation {
    std::uint16_t language = 0;
    std::string name; // UTF-8, or UTF-16 with its byte order mark
    double longitude = 0;
    double latitude = 0;
    double altitude = 0;
    std::string astronomical_body;
};
Read<LocationInformation> read_location(Window value);

// ISO 639-2/T, in three letters, for a language code of Macintosh or one that packs three letters
// into 15 bits (ISO/IEC 14496-12, section 8.4.2.3); "und" when it is neither.
std::string language_of(std::uint16_t code);
// Whether the code is one of Macintosh, whose texts are in its script's encoding.
constexpr bool is_macintosh_language(std::uint16_t code) {
    return code < 0x400;
}

} // namespace vell::formats::isobmff
