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

using TiffFields = std::vector<TiffField>;

// The pointers to the inner directories stand behind the fields that are given; a directory
// without fields is left out.
struct TiffDirectories {
    TiffFields first = {};
    TiffFields exif = {};
    TiffFields gps = {};
    TiffFields interoperability = {};
};

class TiffBuilder {
  public:
    explicit TiffBuilder(ByteOrder order) : order_(order) {}

    std::string build(TiffDirectories directories) {
        bytes_.clear();
        tiff::Header{.order = order_, .first_directory = tiff::Header::size}.write(bytes_);
        const auto add_pointer = [](TiffFields& fields, std::uint16_t tag, const TiffFields& to) {
            if (!to.empty())
                fields.push_back({tag, FieldType::Long, {0}});
        };
        add_pointer(directories.exif, tiff::tag::interoperability_directory,
                    directories.interoperability);
        add_pointer(directories.first, tiff::tag::exif_directory, directories.exif);
        add_pointer(directories.first, tiff::tag::gps_directory, directories.gps);
        add(directories.first);
        follow(tiff::tag::exif_directory, directories.exif);
        follow(tiff::tag::interoperability_directory, directories.interoperability);
        follow(tiff::tag::gps_directory, directories.gps);
        return bytes_;
    }

  private:
    // Writes the directory with its values behind it.
    void add(const TiffFields& fields) {
        std::string values;
        const std::size_t values_at = bytes_.size() + 2 + fields.size() * tiff::Entry::size + 4;
        append_integer<std::uint16_t>(bytes_, static_cast<std::uint16_t>(fields.size()), order_);
        for (const TiffField& field : fields) {
            std::string value = value_of(field);
            const std::uint32_t size = static_cast<std::uint32_t>(value.size());
            const std::size_t one = std::max<std::size_t>(tiff::size_of(field.type), 1);
            tiff::Entry entry{field.tag, field.type,
                              field.count.value_or(size / static_cast<std::uint32_t>(one))};
            if (field.offset || value.size() > entry.value.size()) {
                const auto at = static_cast<std::uint32_t>(values_at + values.size());
                values += value;
                value.clear();
                append_integer<std::uint32_t>(value, field.offset.value_or(at), order_);
            }
            std::ranges::copy(value, entry.value.begin());
            offsets_[field.tag] = bytes_.size() + 8;
            formats::append_record(bytes_, entry, order_);
        }
        append_integer<std::uint32_t>(bytes_, 0, order_);
        bytes_ += values;
    }

    void follow(std::uint16_t tag, const TiffFields& fields) {
        if (fields.empty())
            return;
        std::string here;
        append_integer<std::uint32_t>(here, static_cast<std::uint32_t>(bytes_.size()), order_);
        bytes_.replace(offsets_[tag], here.size(), here);
        add(fields);
    }

    std::string value_of(const TiffField& field) const {
        constexpr std::size_t most = sizeof(std::uint32_t);
        const std::size_t size = std::clamp<std::size_t>(tiff::size_of(field.type), 1, most);
        std::string value = field.bytes;
        for (const std::uint32_t number : field.numbers) {
            std::string bytes;
            append_integer<std::uint32_t>(bytes, number, order_);
            value += bytes.substr(order_ == ByteOrder::Little ? 0 : most - size, size);
        }
        return value;
    }

    ByteOrder order_;
    std::string bytes_;
    std::map<std::uint16_t, std::size_t> offsets_; // where those of values stand, by tag
};

inline std::string build_tiff(ByteOrder order, TiffDirectories directories) {
    return TiffBuilder(order).build(std::move(directories));
}

} // namespace vell::test
