// The records of a block of tags: header, directories (IFDs) and their entries (TIFF 6.0, section
// 2; Exif 2.3, section 4.6). Offsets count from the header's first byte.
#pragma once

#include "src/base/bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// The types of TIFF 6.0, and that of Exif 3.0 for texts; what a file says may be any other number.
enum class FieldType : std::uint16_t {
    None = 0,
    Byte = 1,
    Ascii = 2, // ends with a zero byte
    Short = 3,
    Long = 4,
    Rational = 5, // numerator and denominator, each a Long
    SignedByte = 6,
    Undefined = 7,
    SignedShort = 8,
    SignedLong = 9,
    SignedRational = 10,
    Float = 11,
    Double = 12,
    Utf8 = 129, // ends with a zero byte
};

// The offset of a directory, otherwise a Long (TIFF Technical Note 1). Not known to the tag
// readers.
inline constexpr FieldType ifd_offset{13};

// Bytes of one value of the types 0 to 12.
inline constexpr std::array<std::uint8_t, 13> field_type_sizes{0, 1, 1, 2, 4, 8, 1,
                                                               1, 2, 4, 8, 4, 8};

constexpr bool is_known(FieldType type) {
    return static_cast<std::size_t>(type) < field_type_sizes.size() || type == FieldType::Utf8;
}
// 0 for a type that is not known.
constexpr std::size_t size_of(FieldType type) {
    if (type == FieldType::Utf8)
        return 1;
    return is_known(type) ? field_type_sizes[static_cast<std::size_t>(type)] : 0;
}

// Numbers of the tags that lead to something else. What is known of each other tag stands in
// tag_table.h.
namespace tag {
inline constexpr std::uint16_t sub_directories = 330; // TIFF Technical Note 1
inline constexpr std::uint16_t xmp_packet = 700;
inline constexpr std::uint16_t iptc_block = 33723;
inline constexpr std::uint16_t icc_profile = 34675; // ICC.1:2010, B.4
inline constexpr std::uint16_t exif_directory = 34665;
inline constexpr std::uint16_t gps_directory = 34853;
inline constexpr std::uint16_t maker_note = 37500;
inline constexpr std::uint16_t interoperability_directory = 40965;
} // namespace tag

struct TiffHeader {
    static constexpr std::size_t size = 8;
    static constexpr std::uint16_t magic = 42; // written, but not asked for

    ByteOrder order;
    std::uint32_t first_directory;

    // nullopt for fewer bytes than a header has, or another byte order than "II" and "MM".
    static constexpr std::optional<TiffHeader> read(std::string_view bytes) {
        if (bytes.size() < size || (!bytes.starts_with("II") && !bytes.starts_with("MM")))
            return std::nullopt;
        const ByteOrder order = bytes[0] == 'I' ? ByteOrder::Little : ByteOrder::Big;
        return TiffHeader{order, *load<std::uint32_t>(bytes, 4, order)};
    }
    void write(std::string& bytes) const {
        bytes += order == ByteOrder::Little ? "II" : "MM";
        append_integer<std::uint16_t>(bytes, magic, order);
        append_integer<std::uint32_t>(bytes, first_directory, order);
    }
};

struct IfdEntry {
    static constexpr std::size_t size = 12;
    static constexpr std::size_t inline_size = 4;

    std::uint16_t tag = 0;
    FieldType type = FieldType::Undefined;
    std::uint32_t count = 0;
    std::array<char, inline_size> value{}; // the value itself when it fits, its offset otherwise

    // `bytes` holds at least one entry.
    static constexpr IfdEntry read(std::string_view bytes, ByteOrder order) {
        return {*load<std::uint16_t>(bytes, 0, order),
                FieldType{*load<std::uint16_t>(bytes, 2, order)},
                *load<std::uint32_t>(bytes, 4, order),
                {bytes[8], bytes[9], bytes[10], bytes[11]}};
    }
    void write(std::string& bytes, ByteOrder order) const {
        append_integer<std::uint16_t>(bytes, tag, order);
        append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(type), order);
        append_integer<std::uint32_t>(bytes, count, order);
        bytes.append(value.data(), value.size());
    }

    constexpr std::uint64_t value_size() const { return std::uint64_t{size_of(type)} * count; }
    constexpr bool is_inline() const { return value_size() <= inline_size; }
    // The value's bytes when they stand in the entry; they refer to it.
    constexpr std::string_view inline_value() const {
        return std::string_view(value.data(), value.size())
            .substr(0, static_cast<std::size_t>(value_size()));
    }
    constexpr std::uint32_t offset(ByteOrder order) const {
        return *load<std::uint32_t>({value.data(), value.size()}, 0, order);
    }
};

} // namespace vell::metadata
