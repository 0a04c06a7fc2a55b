#include "src/metadata/values/tag_query.h"

#include "src/base/ascii.h"
#include "src/metadata/values/iptc_names.h"
#include "src/metadata/values/profile_values.h"
#include "src/metadata/values/tag_names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace vell::metadata {
namespace {

constexpr std::string_view exif_kind = "Exif";
constexpr std::string_view gps_kind = "GPS";
constexpr std::string_view iptc_kind = "IPTC";
constexpr std::string_view xmp_kind = "XMP";
constexpr std::string_view icc_kind = "ICC";
constexpr std::string_view image_kind = "Image";
constexpr std::array kinds{exif_kind, gps_kind, iptc_kind, xmp_kind, icc_kind, image_kind};

// What the GPS member has beside the tags.
constexpr std::array<std::string_view, 3> positions{"Latitude", "Longitude", "Altitude"};
constexpr std::string_view gps_date_time = "DateTime"; // asked for as "GPS.DateTime"

bool is_among(const auto& names, std::string_view name) {
    return std::ranges::any_of(
        names, [&](std::string_view each) { return equal_ignoring_case(each, name); });
}

std::optional<std::uint16_t> tag_number(std::string_view text) {
    const bool is_hexadecimal = starts_ignoring_case(text, "0x");
    const std::string_view digits = text.substr(is_hexadecimal ? 2 : 0);
    std::uint16_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                      is_hexadecimal ? 16 : 10);
    if (digits.empty() || read.ec != std::errc() || read.ptr != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

// The member's name for a tag's name or number; nullopt where no tag has it.
std::optional<std::string> tag_name(TagFamily family, std::string_view text) {
    if (const auto number = tag_number(text))
        return name_of(family, *number);
    constexpr std::string_view nameless = "Tag";
    if (starts_ignoring_case(text, nameless))
        if (const auto number = tag_number(text.substr(nameless.size())))
            return name_of(family, *number);
    const auto tag = tag_of(family, text);
    return tag ? std::optional(name_of(family, *tag)) : std::nullopt;
}

bool is_dataset(std::string_view name) {
    return starts_ignoring_case(name, "Dataset1_") || starts_ignoring_case(name, "Dataset2_") ||
           std::ranges::any_of(table::datasets, [&](const DatasetRow& row) {
               return equal_ignoring_case(row.name, name);
           });
}

std::optional<std::string> name_in(std::string_view kind, std::string_view name) {
    const auto if_known = [&](bool is_known) {
        return is_known ? std::optional(std::string(name)) : std::nullopt;
    };
    if (kind == exif_kind)
        return tag_name(TagFamily::General, name);
    if (kind == gps_kind && !is_among(positions, name) && !equal_ignoring_case(name, gps_date_time))
        return tag_name(TagFamily::Gps, name);
    if (kind == iptc_kind)
        return if_known(is_dataset(name));
    if (kind == xmp_kind) // namespaces may be anybody's
        return if_known(name.find(':') != std::string_view::npos);
    if (kind == icc_kind)
        return if_known(is_among(icc_names(), name));
    return if_known(kind != image_kind || is_among(image_names(), name));
}

// A kind and a point before the name; "dc.title" is none.
std::optional<std::string_view> take_kind(std::string_view& text) {
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos)
        return std::nullopt;
    const auto* const kind = std::ranges::find_if(kinds, [&](std::string_view each) {
        return equal_ignoring_case(each, text.substr(0, point));
    });
    if (kind == kinds.end())
        return std::nullopt;
    text.remove_prefix(point + 1);
    return *kind;
}

std::vector<ValuePlace> places_of(std::string_view text) {
    std::vector<ValuePlace> places;
    const auto add = [&](std::string_view kind) {
        if (auto name = name_in(kind, text))
            places.push_back({kind, std::move(*name)});
    };
    if (const auto kind = take_kind(text)) {
        add(*kind);
    } else if (tag_number(text)) {
        add(exif_kind);
    } else if (text.find(':') != std::string_view::npos) {
        add(xmp_kind);
    } else {
        for (const std::string_view each : kinds)
            if (each != gps_kind || !equal_ignoring_case(text, gps_date_time))
                add(each);
    }
    return places;
}

std::string in_one_line(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return text;
}

} // namespace

Result<TagQuery> tag_query_of(std::string_view text) {
    TagQuery query{std::string(text), places_of(text)};
    if (query.places.empty())
        return Failure{ErrorCode::BadParameter};
    return query;
}

ValueKinds kinds_of(const std::vector<TagQuery>& queries) {
    ValueKinds wanted;
    for (const TagQuery& query : queries) {
        for (const ValuePlace& place : query.places) {
            wanted.exif |= place.kind == exif_kind;
            wanted.gps |= place.kind == gps_kind;
            wanted.iptc |= place.kind == iptc_kind;
            wanted.xmp |= place.kind == xmp_kind;
            wanted.icc |= place.kind == icc_kind;
            wanted.image |= place.kind == image_kind;
        }
    }
    return wanted;
}

const Value* find_value(const Members& values, const TagQuery& query) {
    for (const ValuePlace& place : query.places) {
        const Value* const kind = values.find(place.kind);
        if (kind == nullptr || kind->members() == nullptr)
            continue;
        const std::string_view name = place.name;
        const std::size_t colon = place.kind == xmp_kind ? name.find(':') : std::string_view::npos;
        const Value* value = nullptr;
        if (colon == std::string_view::npos) {
            value = kind->members()->find(name);
        } else if (const Value* const of_prefix = kind->members()->find(name.substr(0, colon))) {
            value = of_prefix->members()->find(name.substr(colon + 1));
        }
        if (value != nullptr)
            return value;
    }
    return nullptr;
}

Result<std::string> readable_values(const Members& values, const std::vector<TagQuery>& queries) {
    std::string text;
    bool is_there = false;
    for (const TagQuery& query : queries) {
        const Value* const value = find_value(values, query);
        is_there = is_there || value != nullptr;
        if (&query != queries.data())
            text += '\r';
        if (value != nullptr)
            text +=
                queries.size() == 1 ? value->readable("\r") : in_one_line(value->readable(", "));
    }
    if (!is_there)
        return Failure{ErrorCode::NothingFound};
    return text;
}

Result<Members> queried_members(const Members& values, const std::vector<TagQuery>& queries) {
    Members members;
    bool is_there = false;
    for (const TagQuery& query : queries) {
        const Value* const value = find_value(values, query);
        is_there = is_there || value != nullptr;
        members.add(query.asked, value == nullptr ? Value() : *value);
    }
    if (!is_there)
        return Failure{ErrorCode::NothingFound};
    return members;
}

} // namespace vell::metadata
