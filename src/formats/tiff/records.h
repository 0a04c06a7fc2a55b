// The records of a block of tags: header, directories (IFDs) and their entries (TIFF 6.0, section
// 2; Exif 2.3, section 4.6). Offsets count from the header's first byte.
#pragma once

#include "src/formats/record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::formats::tiff {

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

// Types of BigTIFF, of eight bytes each, which are known in such files only.
inline constexpr FieldType long8{16};
inline constexpr FieldType signed_long8{17};
inline constexpr FieldType ifd8_offset{18};
constexpr bool has_eight_bytes(FieldType type) {
    return type == long8 || type == signed_long8 || type == ifd8_offset;
}

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
inline constexpr std::uint16_t photoshop_resources = 34377; // Adobe Photoshop TIFF Technical Notes
inline constexpr std::uint16_t icc_profile = 34675;         // ICC.1:2010, B.4
inline constexpr std::uint16_t exif_directory = 34665;
inline constexpr std::uint16_t gps_directory = 34853;
inline constexpr std::uint16_t maker_note = 37500;
inline constexpr std::uint16_t interoperability_directory = 40965;
// Texts in UTF-16, which stand in values of the type Byte: XPTitle to XPSubject.
inline constexpr std::uint16_t first_utf16_text = 40091;
inline constexpr std::uint16_t last_utf16_text = 40095;
constexpr bool is_utf16_text(std::uint16_t number) {
    return number >= first_utf16_text && number <= last_utf16_text;
}
} // namespace tag

struct Header {
    static constexpr std::size_t size = 8;
    static constexpr std::uint16_t number = 42; // written, but not asked for

    ByteOrder order = ByteOrder::Little;
    std::uint16_t magic = number;
    std::uint32_t first_directory = 0;

    static constexpr auto fields() {
        return std::tuple{Field{2, &Header::magic}, Field{4, &Header::first_directory}};
    }
    // nullopt for fewer bytes than a header has, or another byte order than "II" and "MM".
    static std::optional<Header> read(std::string_view bytes);
    void write(std::string& bytes) const;
};

struct Entry {
    static constexpr std::size_t size = 12;
    static constexpr std::size_t inline_size = 4;

    std::uint16_t tag = 0;
    FieldType type = FieldType::Undefined;
    std::uint32_t count = 0;
    std::array<char, inline_size> value{}; // the value itself when it fits, its offset otherwise
    // Of an entry of a BigTIFF file, where that takes more than four bytes: the offset of a value,
    // or the number of eight bytes that is one.
    std::uint64_t big_place = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &Entry::tag}, Field{2, &Entry::type}, Field{4, &Entry::count},
                          Field{8, &Entry::value}};
    }

    constexpr std::uint64_t value_size() const {
        const std::size_t one = big_place != 0 && has_eight_bytes(type) ? 8 : size_of(type);
        return std::uint64_t{one} * count;
    }
    constexpr bool is_inline() const { return value_size() <= inline_size; }
    // The value's bytes when they stand in the entry; they refer to it.
    constexpr std::string_view inline_value() const {
        return std::string_view(value.data(), value.size())
            .substr(0, static_cast<std::size_t>(value_size()));
    }
    constexpr std::uint32_t offset(ByteOrder order) const {
        return *load<std::uint32_t>({value.data(), value.size()}, 0, order);
    }
    // The same of a file of either kind.
    constexpr std::uint64_t place(ByteOrder order) const {
        return big_place != 0 ? big_place : offset(order);
    }
    void set_offset(std::size_t offset, ByteOrder order);
};

} // namespace vell::formats::tiff
