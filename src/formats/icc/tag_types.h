// What stands in tags of an ICC profile (ICC.1:2010, section 10; ICC.1:2001, section 6.5 for types
// of version 2): the records that the types begin with, and those that they repeat. A tag begins
// with its type's signature and four bytes that are reserved.
#pragma once

#include "src/formats/icc/profile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>

namespace vell::formats::icc {

// What stands behind the type.
constexpr std::size_t type_size = 8;
constexpr std::string_view value_of(std::string_view tag) {
    return tag.substr(tag.size() < type_size ? tag.size() : type_size);
}

// textDescriptionType, version 2 (6.5.17): ASCII, then UTF-16, then a Macintosh script, each a
// record with its text behind it.
struct AsciiDescription {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t count = 0; // of bytes

    static constexpr auto fields() {
        return std::tuple{Field{type_size, &AsciiDescription::count}};
    }
};
struct UnicodeDescription {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t language = 0;
    std::uint32_t count = 0; // of UTF-16's units

    static constexpr auto fields() {
        return std::tuple{Field{0, &UnicodeDescription::language},
                          Field{4, &UnicodeDescription::count}};
    }
};
struct ScriptDescription {
    static constexpr std::size_t size = 3;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::size_t longest_text = 67;

    std::uint16_t script = 0;
    std::uint8_t count = 0; // of bytes

    static constexpr auto fields() {
        return std::tuple{Field{0, &ScriptDescription::script},
                          Field{2, &ScriptDescription::count}};
    }
};

// multiLocalizedUnicodeType (10.13): this, then names of `name_size` bytes each.
struct LocalizedNames {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t count = 0;
    std::uint32_t name_size = 0;

    static constexpr auto fields() {
        return std::tuple{Field{type_size, &LocalizedNames::count},
                          Field{12, &LocalizedNames::name_size}};
    }
};
struct LocalizedName {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::array<char, 2> language{};
    std::array<char, 2> country{};
    std::uint32_t length = 0;
    std::uint32_t offset = 0; // from the tag's start

    static constexpr auto fields() {
        return std::tuple{Field{0, &LocalizedName::language}, Field{2, &LocalizedName::country},
                          Field{4, &LocalizedName::length}, Field{8, &LocalizedName::offset}};
    }
};

// curveType (10.5): this, then numbers of 16 bits; a single one is a gamma value with eight bits
// behind its point.
struct Curve {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t count = 0;

    static constexpr auto fields() { return std::tuple{Field{type_size, &Curve::count}}; }
};
constexpr double gamma_value(std::uint16_t bits) {
    return bits / 256.0;
}

// XYZType (10.27) is an array of these.
struct XyzNumber {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::array<std::uint32_t, 3> values{}; // fixed numbers

    static constexpr auto fields() { return std::tuple{Field{0, &XyzNumber::values}}; }
};

// signatureType (10.19).
struct SignatureValue {
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t value = 0;

    static constexpr auto fields() { return std::tuple{Field{0, &SignatureValue::value}}; }
};

} // namespace vell::formats::icc
