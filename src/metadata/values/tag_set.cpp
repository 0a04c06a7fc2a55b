#include "src/metadata/values/tag_set.h"

#include "src/base/number_text.h"
#include "src/formats/tiff/exif.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/gps_decimal.h"
#include "src/metadata/values/dates.h"
#include "src/metadata/values/tag_names.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>

namespace vell::metadata {
namespace {

// Values beyond these are told by their size.
constexpr std::size_t most_numbers = 1024;
constexpr std::size_t most_hexadecimal = 1024;
constexpr std::uint64_t most_text = 0x10000;
constexpr std::uint64_t most_of_all = 0x4000000;
constexpr std::size_t most_tags = 20'000;

namespace gps_tag = tiff::gps_tag;

struct DateTags {
    std::uint16_t date;
    std::uint16_t fraction;
    std::uint16_t offset;
};
constexpr std::array dates{DateTags{306, 37520, 36880}, DateTags{36867, 37521, 36881},
                           DateTags{36868, 37522, 36882}};

// Pointers, blocks of other kinds, notes in a form of their makers, and padding.
constexpr std::array<std::uint16_t, 12> tags_of_no_interest{
    330, 700, 33723, 34377, 34665, 34675, 34853, 37500, 40965, 50740, 59932, 59933};

// UNDEFINED values that are numbers of one byte each.
constexpr std::array<std::uint16_t, 3> byte_numbers{37121, 41728, 41729};

constexpr bool is_position(const FoundTag& tag) {
    const std::uint16_t number = tag.entry.tag;
    return tag.directory == TagDirectory::Gps && tag.entry.type == FieldType::Rational &&
           (number == gps_tag::latitude || number == gps_tag::longitude ||
            number == gps_tag::destination_latitude || number == gps_tag::destination_longitude);
}

constexpr bool is_coded_text(const FoundTag& tag) {
    return tiff::has_character_code(tag.directory == TagDirectory::Gps, tag.entry.tag);
}

constexpr TagDirectory directory_of(TagRoot root) {
    switch (root) {
    case TagRoot::Exif:
        return TagDirectory::Exif;
    case TagRoot::Gps:
        return TagDirectory::Gps;
    case TagRoot::Image:
        break;
    }
    return TagDirectory::First;
}

constexpr TagFamily family_of(TagDirectory directory) {
    return directory == TagDirectory::Gps ? TagFamily::Gps : TagFamily::General;
}

std::string told(std::uint64_t count, std::string_view what) {
    return '(' + to_text(count) + ' ' + std::string(what) + ')';
}

template <typename Integer>
Value number_at(std::string_view bytes, std::size_t at, ByteOrder order) {
    using Wide = std::conditional_t<std::is_signed_v<Integer>, std::int64_t, std::uint64_t>;
    return Value(static_cast<Wide>(load<Integer>(bytes, at, order).value_or(0)));
}

template <typename Integer>
Value quotient_at(std::string_view bytes, std::size_t at, ByteOrder order) {
    const auto numerator = load<Integer>(bytes, at, order).value_or(0);
    const auto denominator = load<Integer>(bytes, at + sizeof(Integer), order).value_or(0);
    if (denominator == 0)
        return {};
    return Value(static_cast<double>(numerator) / static_cast<double>(denominator));
}

Value number_of_type(FieldType type, std::string_view bytes, std::size_t at, ByteOrder order) {
    using enum FieldType;
    if (type == tiff::signed_long8)
        return number_at<std::int64_t>(bytes, at, order);
    if (tiff::has_eight_bytes(type))
        return number_at<std::uint64_t>(bytes, at, order);
    switch (type) {
    case Short:
        return number_at<std::uint16_t>(bytes, at, order);
    case Long:
        return number_at<std::uint32_t>(bytes, at, order);
    case SignedByte:
        return number_at<std::int8_t>(bytes, at, order);
    case SignedShort:
        return number_at<std::int16_t>(bytes, at, order);
    case SignedLong:
        return number_at<std::int32_t>(bytes, at, order);
    case Rational:
        return quotient_at<std::uint32_t>(bytes, at, order);
    case SignedRational:
        return quotient_at<std::int32_t>(bytes, at, order);
    case Float:
        return Value(
            double{std::bit_cast<float>(load<std::uint32_t>(bytes, at, order).value_or(0))});
    case Double:
        return Value(std::bit_cast<double>(load<std::uint64_t>(bytes, at, order).value_or(0)));
    default:
        return number_at<std::uint8_t>(bytes, at, order);
    }
}

double number_in(std::string_view digits) {
    double number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

std::string two_digits(std::int64_t number) {
    return (number < 10 ? "0" : "") + to_text(number);
}

std::string without_end_zeros(std::string bytes) {
    bytes.resize(bytes.find_last_not_of('\0') + 1);
    return bytes;
}

} // namespace

std::optional<std::string> exposure_text(std::uint32_t numerator, std::uint32_t denominator) {
    if (denominator == 0)
        return std::nullopt;
    constexpr double longest_fraction = 0.25; // seconds; longer ones are fractions only when exact
    const double seconds = double{1} * numerator / denominator;
    if (numerator != 0 && numerator < denominator &&
        (denominator % numerator == 0 || seconds <= longest_fraction))
        return "1/" + to_text(static_cast<std::uint64_t>(std::llround(1 / seconds)));
    return to_text(seconds, 6);
}

Result<void> TagSet::add(const formats::Window& block, TagRoot root) {
    const auto start = VELL_TRY(coded(formats::if_sound(tiff::Start::read(block))));
    if (!start)
        return {};
    blocks_.push_back({block, start->layout});
    bytes_left_ = std::min(bytes_left_ + block.size(), most_of_all);
    return walk(blocks_.size() - 1, start->first_directory, directory_of(root));
}

// A directory leads to others below it and each kind is taken once for a block, so that loops end.
Result<void> TagSet::walk(std::size_t block, std::uint64_t offset, TagDirectory directory) {
    const Block& in = blocks_[block];
    const auto found =
        VELL_TRY(coded(formats::if_sound(tiff::Directory::at(in.bytes, offset, in.layout))));
    if (!found)
        return {};
    std::uint64_t exif = 0;
    std::uint64_t gps = 0;
    std::uint64_t interoperability = 0;
    const auto entries = VELL_TRY(coded(formats::if_sound(found->entries())));
    for (const tiff::Entry& entry : entries.value_or(std::vector<tiff::Entry>())) {
        if (tags_.size() >= most_tags)
            return {};
        tags_.push_back({directory, block, entry});
        if (entry.tag == tiff::tag::exif_directory)
            exif = entry.place(in.layout.order);
        else if (entry.tag == tiff::tag::gps_directory)
            gps = entry.place(in.layout.order);
        else if (entry.tag == tiff::tag::interoperability_directory)
            interoperability = entry.place(in.layout.order);
    }
    if (directory == TagDirectory::First && exif != 0)
        VELL_TRY(walk(block, exif, TagDirectory::Exif));
    if (directory == TagDirectory::First && gps != 0)
        VELL_TRY(walk(block, gps, TagDirectory::Gps));
    if (directory == TagDirectory::Exif && interoperability != 0)
        VELL_TRY(walk(block, interoperability, TagDirectory::Interoperability));
    return {};
}

const FoundTag* TagSet::find(TagDirectory directory, std::uint16_t tag) const {
    const auto found = std::ranges::find_if(tags_, [&](const FoundTag& each) {
        return each.directory == directory && each.entry.tag == tag;
    });
    return found == tags_.end() ? nullptr : &*found;
}

std::string TagSet::bytes_of(const FoundTag& tag, std::uint64_t most) const {
    const Block& in = blocks_[tag.block];
    const std::uint64_t wanted = std::min(tag.entry.value_size(), most);
    if (!tag.entry.is_inline()) {
        if (wanted > bytes_left_)
            return {};
        bytes_left_ -= wanted;
    }
    const auto read = tiff::read_value(in.bytes, tag.entry, in.layout.order, wanted);
    return read ? *read : std::string();
}

std::string TagSet::until_zero(const FoundTag& tag) const {
    std::string text = bytes_of(tag, most_text);
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

std::string TagSet::text_of(TagDirectory directory, std::uint16_t tag) const {
    const FoundTag* const found = find(directory, tag);
    return found != nullptr && found->entry.type == FieldType::Ascii ? until_zero(*found) : "";
}

std::vector<TagSet::Rational> TagSet::rationals_of(const FoundTag& tag, std::size_t most) const {
    if (tag.entry.type != FieldType::Rational)
        return {};
    const ByteOrder order = blocks_[tag.block].layout.order;
    const std::string bytes = bytes_of(tag, most * 8);
    std::vector<Rational> rationals;
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8)
        rationals.push_back(
            {*load<std::uint32_t>(bytes, at, order), *load<std::uint32_t>(bytes, at + 4, order)});
    return rationals;
}

std::optional<std::string> TagSet::date_text(const FoundTag& tag) const {
    const auto* const date = std::ranges::find(dates, tag.entry.tag, &DateTags::date);
    if (tag.directory == TagDirectory::Gps || date == dates.end() ||
        tag.entry.type != FieldType::Ascii)
        return std::nullopt;
    return exif_date(until_zero(tag), text_of(TagDirectory::Exif, date->fraction),
                     text_of(TagDirectory::Exif, date->offset));
}

// Hours, minutes and seconds, of which the last may have a fraction.
std::optional<std::string> TagSet::gps_time_text(const FoundTag& tag) const {
    const std::vector<Rational> parts = rationals_of(tag, 3);
    if (parts.size() != 3 ||
        std::ranges::any_of(parts, [](const Rational& part) { return part.denominator == 0; }))
        return std::nullopt;
    const std::int64_t hours = parts[0].numerator / parts[0].denominator;
    const std::int64_t minutes = parts[1].numerator / parts[1].denominator;
    const double seconds =
        static_cast<double>(parts[2].numerator) / static_cast<double>(parts[2].denominator);
    if (hours > 24 || minutes > 59 || seconds >= 61)
        return std::nullopt;
    const std::string digits = to_text(seconds, seconds < 10 ? 7 : 8);
    if (digits.find('e') != std::string::npos)
        return std::nullopt;
    return two_digits(hours) + ':' + two_digits(minutes) + ':' + (seconds < 10 ? "0" : "") +
           digits + 'Z';
}

std::optional<std::string> TagSet::position_text(const FoundTag& tag) const {
    std::vector<UnsignedRational> parts;
    for (const Rational& part : rationals_of(tag, 4))
        parts.push_back({static_cast<std::uint32_t>(part.numerator),
                         static_cast<std::uint32_t>(part.denominator)});
    const std::string reference =
        text_of(TagDirectory::Gps, static_cast<std::uint16_t>(tag.entry.tag - 1));
    return decimal_degrees(parts, reference.empty() ? '\0' : reference[0]);
}

std::optional<FoundText> TagSet::readable_text(const FoundTag& tag) const {
    const ByteOrder order = blocks_[tag.block].layout.order;
    const bool is_gps = tag.directory == TagDirectory::Gps;
    const auto plain = [](std::optional<std::string> text) {
        return text ? std::optional(FoundText{std::move(*text)}) : std::nullopt;
    };
    if (is_coded_text(tag)) {
        if (tag.entry.value_size() > most_text)
            return std::nullopt;
        return coded_text(bytes_of(tag, most_text), order, otherwise_);
    }
    if (!is_gps && tiff::tag::is_utf16_text(tag.entry.tag)) {
        // Windows writes little endian whatever the block says.
        return utf16_text(bytes_of(tag, most_text), ByteOrder::Little);
    }
    if (is_position(tag))
        return plain(position_text(tag));
    if (is_gps && tag.entry.tag == gps_tag::time)
        return plain(gps_time_text(tag));
    if (is_gps && tag.entry.tag == gps_tag::date)
        return plain(exif_date(text_of(TagDirectory::Gps, gps_tag::date)));
    if (!is_gps && tag.entry.tag == tiff::tag::exposure_time) {
        const auto parts = rationals_of(tag, 1);
        if (!parts.empty())
            return plain(exposure_text(static_cast<std::uint32_t>(parts[0].numerator),
                                       static_cast<std::uint32_t>(parts[0].denominator)));
    }
    return plain(date_text(tag));
}

Value TagSet::numbers(const FoundTag& tag) const {
    const tiff::Entry& entry = tag.entry;
    if (entry.count > most_numbers)
        return told(entry.count, "numbers");
    const std::size_t size = tiff::has_eight_bytes(entry.type) ? 8 : tiff::size_of(entry.type);
    const std::string bytes = bytes_of(tag, most_numbers * size);
    Values values;
    for (std::size_t at = 0; at + size <= bytes.size(); at += size)
        values.push_back(number_of_type(entry.type, bytes, at, blocks_[tag.block].layout.order));
    if (entry.count == 1 && values.size() == 1)
        return std::move(values.front());
    return values;
}

Value TagSet::bytes_value(const FoundTag& tag, const TextDecoder& decoder) const {
    if (std::ranges::find(byte_numbers, tag.entry.tag) != byte_numbers.end() &&
        tag.directory != TagDirectory::Gps)
        return numbers(tag);
    if (tag.entry.count > most_text)
        return told(tag.entry.count, "bytes");
    const std::string bytes = bytes_of(tag, most_text);
    const std::string text = without_end_zeros(bytes);
    if (!text.empty() && looks_like_text(text)) {
        const FoundText found = recognised(text, otherwise_);
        if (found.encoding == TextEncoding::Utf8)
            return decoder(found.bytes, found.encoding);
    }
    return bytes.size() > most_hexadecimal ? told(tag.entry.count, "bytes") : hexadecimal(bytes);
}

Value TagSet::plain_value(const FoundTag& tag, const TextDecoder& decoder) const {
    switch (tag.entry.type) {
    case FieldType::Ascii:
    case FieldType::Utf8: {
        const FoundText found = recognised(until_zero(tag), otherwise_);
        return decoder(found.bytes, found.encoding);
    }
    case FieldType::Undefined:
        return bytes_value(tag, decoder);
    default:
        return numbers(tag);
    }
}

std::optional<Value> TagSet::value(const FoundTag& tag, const TextDecoder& decoder) const {
    const bool is_gps = tag.directory == TagDirectory::Gps;
    const FieldType type = tag.entry.type;
    if ((!tiff::is_known(type) && !tiff::has_eight_bytes(type)) || type == FieldType::None ||
        (!is_gps &&
         std::ranges::find(tags_of_no_interest, tag.entry.tag) != tags_of_no_interest.end()))
        return std::nullopt;
    const std::optional<FoundText> readable = readable_text(tag);
    if (!readable)
        return plain_value(tag, decoder);
    std::string text = decoder(readable->bytes, readable->encoding);
    if (is_position(tag) || (!is_gps && tag.entry.tag == tiff::tag::exposure_time))
        return plain_value(tag, decoder).shown_as(std::move(text));
    return text;
}

void TagSet::add_position(Members& gps) const {
    const auto find_in_gps = [&](std::uint16_t tag) {
        return find(TagDirectory::Gps, tag);
    };
    const auto add_degrees = [&](const char* name, std::uint16_t tag) {
        const FoundTag* const found = find_in_gps(tag);
        if (const auto text = found == nullptr ? std::nullopt : position_text(*found))
            gps.add(name, Value(number_in(*text)).shown_as(*text));
    };
    add_degrees("Latitude", gps_tag::latitude);
    add_degrees("Longitude", gps_tag::longitude);
    if (const FoundTag* const altitude = find_in_gps(gps_tag::altitude)) {
        const auto parts = rationals_of(*altitude, 1);
        const FoundTag* const reference = find_in_gps(gps_tag::altitude_reference);
        const std::string below = reference == nullptr ? "" : bytes_of(*reference, 1);
        // Below the sea, or below the ellipsoid (Exif 3.0).
        const bool is_below = !below.empty() && (below[0] == 1 || below[0] == 3);
        if (!parts.empty() && parts[0].denominator != 0)
            gps.add("Altitude",
                    Value((is_below ? -1.0 : 1.0) * static_cast<double>(parts[0].numerator) /
                          static_cast<double>(parts[0].denominator)));
    }
    const auto date = exif_date(text_of(TagDirectory::Gps, gps_tag::date));
    const FoundTag* const time = find_in_gps(gps_tag::time);
    const auto time_text = time == nullptr ? std::nullopt : gps_time_text(*time);
    if (date && time_text && date->find('T') == std::string::npos)
        gps.add("DateTime", Value(*date + 'T' + *time_text));
}

namespace {

Members members_of(const TagSet& tags, const TextDecoder& decoder, bool of_gps) {
    Members members;
    for (const FoundTag& tag : tags.tags()) {
        if ((tag.directory == TagDirectory::Gps) != of_gps)
            continue;
        std::string name = name_of(family_of(tag.directory), tag.entry.tag);
        if (members.has(name))
            continue;
        if (auto value = tags.value(tag, decoder))
            members.add(std::move(name), std::move(*value));
    }
    return members;
}

} // namespace

Members exif_members(const TagSet& tags, const TextDecoder& decoder) {
    return members_of(tags, decoder, false);
}

Members gps_members(const TagSet& tags, const TextDecoder& decoder) {
    Members members = members_of(tags, decoder, true);
    tags.add_position(members);
    return members;
}

} // namespace vell::metadata
