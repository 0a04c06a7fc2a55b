// Blocks of tags made for tests, in either byte order, sound or not.
#pragma once

#include "src/formats/tiff/records.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

namespace tiff = formats::tiff;

using tiff::FieldType;

struct TiffField {
    std::uint16_t tag;
    FieldType type;
    std::vector<std::uint32_t> numbers = {}; // rationals are two each
    std::string bytes = {};                  // instead of numbers
    // What the entry says, where that is not the truth.
    std::optional<std::uint32_t> count = {};
    std::optional<std::uint32_t> offset = {};
};

inline TiffField ascii(std::uint16_t tag, std::string text) {
    text += '\0';
    return {tag, FieldType::Ascii, {}, std::move(text)};
}
inline TiffField undefined(std::uint16_t tag, std::string bytes) {
    return {tag, FieldType::Undefined, {}, std::move(bytes)};
}
inline TiffField bytes(std::uint16_t tag, std::string values) {
    return {tag, FieldType::Byte, {}, std::move(values)};
}

inline TiffField shorts(std::uint16_t tag, std::vector<std::uint32_t> numbers) {
    return {tag, FieldType::Short, std::move(numbers)};
}
inline TiffField longs(std::uint16_t tag, std::vector<std::uint32_t> numbers) {
    return {tag, FieldType::Long, std::move(numbers)};
}
inline TiffField rationals(std::uint16_t tag, std::vector<std::uint32_t> numbers) {
    return {tag, FieldType::Rational, std::move(numbers)};
}

using TiffFields = std::vector<TiffField>;

// The pointers to the inner directories stand behind the fields that are given; a directory
// without fields is left out.
struct TiffDirectories {
    TiffFields first = {};
    TiffFields exif = {};
    TiffFields gps = {};
    TiffFields interoperability = {};
};

// A number takes no more than four bytes.
inline std::string tiff_value(ByteOrder order, const TiffField& field) {
    constexpr std::size_t most = sizeof(std::uint32_t);
    const std::size_t size = std::clamp<std::size_t>(tiff::size_of(field.type), 1, most);
    std::string value = field.bytes;
    for (const std::uint32_t number : field.numbers) {
        std::string bytes;
        append_integer<std::uint32_t>(bytes, number, order);
        value += bytes.substr(order == ByteOrder::Little ? 0 : most - size, size);
    }
    return value;
}

inline std::string build_tiff(ByteOrder order, const TiffDirectories& directories) {
    std::string bytes;
    std::map<std::uint16_t, std::size_t> offsets; // where those of values stand, by tag
    // Writes a directory with its values behind it.
    const auto add = [&](const TiffFields& fields) {
        std::string values;
        const std::size_t values_at = bytes.size() + 2 + fields.size() * tiff::Entry::size + 4;
        append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(fields.size()), order);
        for (const TiffField& field : fields) {
            std::string value = tiff_value(order, field);
            const std::size_t one = std::max<std::size_t>(tiff::size_of(field.type), 1);
            const auto count = static_cast<std::uint32_t>(value.size() / one);
            tiff::Entry entry{field.tag, field.type, field.count.value_or(count)};
            if (field.offset || value.size() > entry.value.size()) {
                const auto at = static_cast<std::uint32_t>(values_at + values.size());
                values += std::exchange(value, "");
                append_integer<std::uint32_t>(value, field.offset.value_or(at), order);
            }
            std::ranges::copy(value, entry.value.begin());
            offsets[field.tag] = bytes.size() + 8;
            formats::append_record(bytes, entry, order);
        }
        append_integer<std::uint32_t>(bytes, 0, order);
        bytes += values;
    };
    const auto point = [](TiffFields& fields, std::uint16_t tag, const TiffFields& to) {
        if (!to.empty())
            fields.push_back({tag, FieldType::Long, {0}});
    };
    const auto follow = [&](std::uint16_t tag, const TiffFields& fields) {
        if (fields.empty())
            return;
        std::string here;
        append_integer<std::uint32_t>(here, static_cast<std::uint32_t>(bytes.size()), order);
        bytes.replace(offsets[tag], here.size(), here);
        add(fields);
    };
    auto [first, exif, gps, interoperability] = directories; // with the pointers among them
    point(exif, tiff::tag::interoperability_directory, interoperability);
    point(first, tiff::tag::exif_directory, exif);
    point(first, tiff::tag::gps_directory, gps);
    tiff::Header{.order = order, .first_directory = tiff::Header::size}.write(bytes);
    add(first);
    follow(tiff::tag::exif_directory, exif);
    follow(tiff::tag::interoperability_directory, interoperability);
    follow(tiff::tag::gps_directory, gps);
    return bytes;
}

// Of one directory.
inline std::string tags_of(TiffFields fields, ByteOrder order = ByteOrder::Little) {
    return build_tiff(order, {.first = std::move(fields)});
}

} // namespace vell::test
