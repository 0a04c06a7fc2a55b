#include "src/metadata/writing/exif_value.h"

#include "src/base/ascii.h"
#include "src/base/utf8.h"
#include "src/formats/tiff/exif.h"
#include "src/metadata/writing/exif_date.h"
#include "src/metadata/writing/rational_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace vell::metadata {
namespace {

namespace tiff = formats::tiff;
namespace character_code = tiff::character_code;
namespace gps_tag = tiff::gps_tag;

// How people write a number with its unit.
struct UnitOf {
    TagFamily family;
    std::uint16_t tag;
    std::string_view before;
    std::string_view behind;
};
constexpr UnitOf units[] = {{TagFamily::General, 33434, "", "s"},  // ExposureTime
                            {TagFamily::General, 33437, "f/", ""}, // FNumber
                            {TagFamily::General, 37382, "", "m"},  // SubjectDistance
                            {TagFamily::General, 37386, "", "mm"}, // FocalLength
                            {TagFamily::Gps, 6, "", "m"}};         // GPSAltitude

struct DateTag {
    TagFamily family;
    std::uint16_t tag;
    bool has_time;
};
constexpr DateTag date_tags[] = {{TagFamily::General, 306, true},   // DateTime
                                 {TagFamily::General, 36867, true}, // DateTimeOriginal
                                 {TagFamily::General, 36868, true}, // DateTimeDigitized
                                 {TagFamily::Gps, 29, false}};      // GPSDateStamp

Failure<ErrorCode> unfit() {
    return Failure{ErrorCode::BadParameter};
}

// Takes the first line off `text`, without the blanks around it.
std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : text.empty() ? 0 : 1);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return line.substr(0, line.find_last_not_of(" \t") + 1);
}

std::optional<std::int64_t> parse_integer(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                    : std::nullopt;
}

std::string_view without_unit(std::string_view line, const TagTarget& target) {
    for (const UnitOf& unit : units) {
        if (unit.family != target.family || unit.tag != target.tag)
            continue;
        if (starts_ignoring_case(line, unit.before))
            line.remove_prefix(unit.before.size());
        if (ends_ignoring_case(line, unit.behind))
            line.remove_suffix(unit.behind.size());
        line = line.substr(0, line.find_last_not_of(' ') + 1);
    }
    return line;
}

template <typename Integer>
Result<std::string> integers(std::string_view text, ByteOrder order) {
    using Limits = std::numeric_limits<Integer>;
    // The reader of blocks shows a long of 2^31 or more as a negative number.
    constexpr std::int64_t least = std::is_same_v<Integer, std::uint32_t>
                                       ? std::numeric_limits<std::int32_t>::min()
                                       : std::int64_t{Limits::min()};
    std::string bytes;
    do {
        const auto number = parse_integer(take_line(text));
        if (!number || *number < least || *number > std::int64_t{Limits::max()})
            return unfit();
        append_integer<Integer>(bytes, static_cast<Integer>(*number), order);
    } while (!text.empty());
    return bytes;
}

template <typename Integer>
Result<std::string> rationals(std::string_view text, const TagTarget& target) {
    const ByteOrder order = target.order;
    std::string bytes;
    do {
        const std::string_view line = without_unit(take_line(text), target);
        const auto fraction = parse_fraction(line, std::numeric_limits<Integer>::max());
        if (!fraction || (!std::is_signed_v<Integer> && fraction->numerator < 0))
            return unfit();
        append_integer<Integer>(bytes, static_cast<Integer>(fraction->numerator), order);
        append_integer<Integer>(bytes, static_cast<Integer>(fraction->denominator), order);
    } while (!text.empty());
    return bytes;
}

std::string utf16_bytes(std::string_view text, ByteOrder order) {
    std::string bytes;
    for (const char16_t unit : utf16_from_utf8(text))
        append_integer<std::uint16_t>(bytes, unit, order);
    return bytes;
}

// Numbers with points between them.
Result<std::string> version_bytes(std::string_view text) {
    std::string bytes;
    for (;;) {
        const std::size_t point = text.find('.');
        const auto number = parse_integer(text.substr(0, point));
        if (!number || *number < 0 || *number > 255)
            return unfit();
        bytes += static_cast<char>(*number);
        if (point == std::string_view::npos)
            return bytes;
        text.remove_prefix(point + 1);
    }
}

Result<std::string> byte_values(std::string_view text, const TagTarget& target,
                                const TextStore& store) {
    if (target.family == TagFamily::Gps && target.tag == gps_tag::version)
        return version_bytes(text);
    if (target.family == TagFamily::Gps && target.tag == gps_tag::altitude_reference)
        return integers<std::uint8_t>(text, target.order);
    if (target.family == TagFamily::General && tiff::tag::is_utf16_text(target.tag))
        return utf16_bytes(text, ByteOrder::Little) + std::string(2, '\0');
    return store.store(text);
}

// A text that was read behind the remark that it is not UTF-8 was read natively.
Result<std::string> text_value(std::string_view text, TextEncoding encoding,
                               const TextStore& store) {
    if (text.starts_with(params::invalid_utf8_trying_native)) {
        text.remove_prefix(params::invalid_utf8_trying_native.size());
        encoding = TextEncoding::Native;
    }
    std::string bytes = VELL_TRY(store.store_as(encoding, text));
    bytes.resize(std::min(bytes.find('\0'), bytes.size()));
    return bytes + '\0';
}

Result<std::string> undefined_value(std::string_view text, const TagTarget& target,
                                    const TextStore& store) {
    const bool has_code = tiff::has_character_code(target.family == TagFamily::Gps, target.tag);
    const auto begins_with = [&](std::string_view code) {
        return text.starts_with(code);
    };
    if (!has_code || std::ranges::any_of(character_code::all, begins_with))
        return store.store(text);
    if (is_ascii(text))
        return std::string(character_code::ascii).append(text);
    return std::string(character_code::unicode) + utf16_bytes(text, target.order);
}

} // namespace

Result<std::string> exif_value(std::string_view text, const TagTarget& target,
                               const TextStore& store) {
    using enum FieldType;
    const auto date = std::ranges::find_if(date_tags, [&](const DateTag& candidate) {
        return candidate.family == target.family && candidate.tag == target.tag;
    });
    if (date != std::end(date_tags) && !is_exif_date(text, date->has_time))
        return unfit();
    switch (target.type) {
    case Byte:
        return byte_values(text, target, store);
    case Ascii:
        return text_value(text, store.chosen().value_or(TextEncoding::Utf8), store);
    case Utf8:
        return text_value(text, TextEncoding::Utf8, store);
    case Short:
        return integers<std::uint16_t>(text, target.order);
    case Long:
        return integers<std::uint32_t>(text, target.order);
    case Rational:
        return rationals<std::uint32_t>(text, target);
    case SignedByte:
        return integers<std::int8_t>(text, target.order);
    case Undefined:
        return undefined_value(text, target, store);
    case SignedShort:
        return integers<std::int16_t>(text, target.order);
    case SignedLong:
        return integers<std::int32_t>(text, target.order);
    case SignedRational:
        return rationals<std::int32_t>(text, target);
    default: // no known tag has the other types
        return unfit();
    }
}

bool is_position(const TagTarget& target) {
    return target.family == TagFamily::Gps &&
           (target.tag == 2 || target.tag == 4 || target.tag == 20 || target.tag == 22);
}

std::optional<std::string> position_from_degrees(std::string_view text, ByteOrder order) {
    if (text.find_first_of("\r\n/") != std::string_view::npos)
        return std::nullopt;
    const auto degrees = parse_decimal(text);
    if (!degrees || !(std::abs(*degrees) <= 360))
        return std::nullopt;
    // Whole steps of a millionth of a second, so that 60 seconds never come out.
    constexpr std::uint64_t step = 1'000'000;
    const auto steps = static_cast<std::uint64_t>(std::llround(std::abs(*degrees) * 3600 * step));
    const std::uint64_t values[] = {steps / step / 3600, 1,   steps / step / 60 % 60, 1,
                                    steps % (60 * step), step};
    std::string bytes;
    for (const std::uint64_t value : values)
        append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(value), order);
    return bytes;
}

} // namespace vell::metadata
