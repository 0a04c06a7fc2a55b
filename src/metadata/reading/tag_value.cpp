#include "src/metadata/reading/tag_value.h"

#include "src/base/number_text.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"
#include "src/formats/tiff/exif.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/gps_decimal.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

namespace vell::metadata {
namespace {

constexpr std::uint64_t all = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t rational_size = 8;
constexpr std::string_view corrupt_tag = "<CORRUPT EXIF TAG>";

template <typename Integer>
using Widest = std::conditional_t<std::is_signed_v<Integer>, std::int64_t, std::uint64_t>;

template <typename Integer>
std::string decimal(Integer value) {
    return to_text(Widest<Integer>{value});
}

// From the version's fifth byte on the standard knows none, and no number is shown.
std::string version_text(std::string_view bytes, std::uint32_t count) {
    std::string text;
    for (const char byte : bytes)
        text += (text.empty() ? "" : ".") +
                (count >= 5 ? "0" : decimal(static_cast<std::uint8_t>(byte)));
    return text;
}

} // namespace

Failure<ErrorCode> ValueReader::beyond_end() const {
    return Failure{rules_.values_are_cut ? ErrorCode::CorruptStructure : ErrorCode::EndOfFile};
}

Result<void> ValueReader::append(const tiff::Entry& entry, TagFamily family) {
    const Result<void> done = append_known(entry, family);
    if (!done && done.error() == ErrorCode::CorruptStructure)
        text_.append(corrupt_tag);
    return done;
}

Result<void> ValueReader::append_known(const tiff::Entry& entry, TagFamily family) {
    using enum FieldType;
    switch (entry.type) {
    case None:
        text_.append("???unknown???");
        return {};
    case Byte:
        return append_bytes(entry, family);
    case Ascii:
        return append_text(entry, source_);
    case Utf8:
        return append_text(entry, TextEncoding::Utf8);
    case Short:
        return append_first<std::uint16_t>(entry);
    case Long:
        return rules_.longs_are_signed ? append_first<std::int32_t>(entry)
                                       : append_first<std::uint32_t>(entry);
    case Rational:
        return append_rationals<std::uint32_t>(entry);
    case SignedByte:
        return append_first<std::int8_t>(entry);
    case Undefined: {
        const bool is_raw = options_.raw_values && source_ == TextEncoding::Utf8;
        return append_all(entry, is_raw ? TextEncoding::Native : source_);
    }
    case SignedShort:
        return append_first<std::int16_t>(entry);
    case SignedLong:
        return append_first<std::int32_t>(entry);
    case SignedRational:
        return append_rationals<std::int32_t>(entry);
    case Float:
        return append_word_as_float(entry, rules_.floats_are_single);
    case Double: // of its eight bytes the first four
        return append_word_as_float(entry, false);
    }
    if (entry.big_place != 0 && tiff::has_eight_bytes(entry.type))
        return entry.type == tiff::signed_long8 ? append_first<std::int64_t>(entry)
                                                : append_first<std::uint64_t>(entry);
    return Failure{ErrorCode::CorruptStructure};
}

// Where the first so many bytes of a value stand that is not in its entry.
Result<formats::Window> ValueReader::place_of(const tiff::Entry& entry, std::uint64_t wanted) {
    const std::uint64_t offset = entry.place(order_);
    if (rules_.values_are_cut && offset > block_.size())
        return Failure{ErrorCode::CorruptStructure};
    const formats::Window place = block_.part(offset, wanted);
    if (place.size() > bytes_left_)
        return Failure{ErrorCode::CorruptStructure};
    bytes_left_ -= place.size();
    return place;
}

Result<ValueReader::Value> ValueReader::value(const tiff::Entry& entry, std::uint64_t most) {
    const std::uint64_t wanted = std::min(entry.value_size(), most);
    if (!entry.is_inline())
        VELL_TRY(place_of(entry, wanted));
    std::string bytes = VELL_TRY(coded(tiff::read_value(block_, entry, order_, wanted)));
    const bool is_whole = bytes.size() == wanted;
    return Value{std::move(bytes), is_whole};
}

// The bytes before the first zero byte, without reading far beyond it: the count may be any number.
Result<ValueReader::Value> ValueReader::value_to_zero(const tiff::Entry& entry) {
    const std::uint64_t bytes_left = bytes_left_;
    for (std::uint64_t most = 1024;; most *= 4) {
        bytes_left_ = bytes_left;
        Value read = VELL_TRY(value(entry, most));
        if (const std::size_t zero = read.bytes.find('\0'); zero != std::string::npos) {
            if (!entry.is_inline())
                bytes_left_ = bytes_left - zero;
            read.bytes.resize(zero);
            return Value{std::move(read.bytes), true};
        }
        if (!read.is_whole || most >= entry.value_size())
            return read;
    }
}

Result<void> ValueReader::check(const Value& value) const {
    if (!value.is_whole && !rules_.values_are_cut)
        return beyond_end();
    return {};
}

Result<void> ValueReader::append_bytes(const tiff::Entry& entry, TagFamily family) {
    const bool is_gps = family == TagFamily::Gps;
    if (is_gps && entry.tag == formats::tiff::gps_tag::altitude_reference)
        return append_first<std::uint8_t>(entry);
    const bool is_version = is_gps && entry.tag == formats::tiff::gps_tag::version;
    const bool is_utf16 = !is_gps && tiff::tag::is_utf16_text(entry.tag) && options_.want_exif;
    if (is_utf16)
        return append_utf16(entry);
    if (!is_version)
        return append_all(entry, source_);
    const Value read = VELL_TRY(value(entry, all));
    text_.append(version_text(read.bytes, entry.count));
    return check(read);
}

// Part by part, since in UTF-8 a text may be half as long again.
Result<void> ValueReader::append_utf16(const tiff::Entry& entry) {
    constexpr std::uint64_t part_size = 0x8000;
    constexpr std::size_t unit_size = sizeof(char16_t);
    if (entry.is_inline()) {
        text_.append_utf16(VELL_TRY(value(entry, all)).bytes, order_);
        return {};
    }
    formats::Window place = VELL_TRY(place_of(entry, entry.value_size()));
    for (bool has_ended = false; !has_ended && place.remaining() >= unit_size;) {
        std::string part = VELL_TRY(coded(place.read_bytes(part_size)));
        for (std::size_t at = 0; const auto code = load<std::uint16_t>(part, at, order_);
             at += unit_size)
            has_ended = has_ended || *code == 0;
        const auto last = load<std::uint16_t>(part, part.size() - unit_size, order_);
        if (part.size() > unit_size && place.remaining() >= unit_size && is_high_surrogate(*last)) {
            part.resize(part.size() - unit_size); // its other half comes with the next part
            place.seek(place.position() - unit_size);
        }
        text_.append_utf16(part, order_);
    }
    return place.is_whole() || rules_.values_are_cut ? Result<void>() : beyond_end();
}

Result<void> ValueReader::append_text(const tiff::Entry& entry, TextEncoding encoding) {
    Value read = VELL_TRY(value_to_zero(entry));
    const bool is_readable = encoding != TextEncoding::Utf8 || is_valid_utf8(read.bytes);
    if (!is_readable)
        text_.append(params::invalid_utf8_trying_native);
    text_.take(std::move(read.bytes), is_readable ? encoding : TextEncoding::Native);
    return check(read);
}

Result<void> ValueReader::append_all(const tiff::Entry& entry, TextEncoding encoding) {
    Value read = VELL_TRY(value(entry, all));
    text_.take(std::move(read.bytes), encoding);
    return check(read);
}

template <typename Integer>
Result<void> ValueReader::append_first(const tiff::Entry& entry) {
    const Value read = VELL_TRY(value(entry, sizeof(Integer)));
    if (const auto first = load<Integer>(read.bytes, 0, order_))
        text_.append(decimal(*first));
    return check(read);
}

// The word is taken for a whole number, not for the bits of a floating-point one.
Result<void> ValueReader::append_word_as_float(const tiff::Entry& entry, bool is_single) {
    const Value read = VELL_TRY(value(entry, sizeof(std::uint32_t)));
    if (const auto word = load<std::uint32_t>(read.bytes, 0, order_)) {
        const std::uint64_t shown =
            is_single ? static_cast<std::uint64_t>(static_cast<float>(*word)) : *word;
        text_.append(to_text(shown) + ".000000");
    }
    return check(read);
}

template <typename Integer>
Result<void> ValueReader::append_rationals(const tiff::Entry& entry) {
    const Result<Value> read = value(entry, all);
    if (!read && read.error() == ErrorCode::CorruptStructure)
        return Failure{read.error()};
    const std::string_view bytes = read ? std::string_view(read->bytes) : std::string_view();
    const std::string_view over_zero =
        std::is_signed_v<Integer> && rules_.signed_over_zero_is_empty ? "" : "nan";

    constexpr std::size_t longest_part = 0x4000; // the text may be longer than the value
    std::string text;
    Result<void> done;
    const std::uint64_t there = bytes.size() / rational_size;
    const std::uint64_t shown =
        rules_.values_are_cut ? std::min<std::uint64_t>(there, entry.count) : entry.count;
    for (std::uint64_t i = 0; i < shown; ++i) {
        if (text.size() >= longest_part) {
            text_.append(text);
            text.clear();
        }
        if (i > 0)
            text += '\r';
        if (i >= there) {
            if (--failed_values_left_ < 0) {
                done = Failure{ErrorCode::CorruptStructure};
                break;
            }
            text += "<readErr>";
            continue;
        }
        const auto at = static_cast<std::size_t>(i) * rational_size;
        const Integer numerator = *load<Integer>(bytes, at, order_);
        const Integer denominator = *load<Integer>(bytes, at + sizeof(Integer), order_);
        if (options_.raw_values)
            text += decimal(numerator) + "/" + decimal(denominator);
        else if (denominator == 0)
            text += over_zero;
        else
            text += to_text(static_cast<double>(numerator) / static_cast<double>(denominator), 6);
    }
    text_.append(text);
    return done;
}

bool ValueReader::append_decimal(const tiff::Entry& position, char reference) {
    std::array<UnsignedRational, 3> parts{};
    if (position.type != FieldType::Rational || position.count > parts.size())
        return false;
    const std::uint64_t bytes_left = bytes_left_;
    const Result<Value> read = value(position, all);
    bytes_left_ = bytes_left; // if it is none, it is read again
    if (!read || !read->is_whole)
        return false;
    const std::span used = std::span(parts).first(position.count);
    for (std::size_t at = 0; UnsignedRational & part : used) {
        part = {*load<std::uint32_t>(read->bytes, at, order_),
                *load<std::uint32_t>(read->bytes, at + 4, order_)};
        at += rational_size;
    }
    const auto degrees = decimal_degrees(used, reference);
    if (degrees)
        text_.append(*degrees);
    return degrees.has_value();
}

char ValueReader::first_byte(const tiff::Entry& entry) {
    const Result<Value> read = value(entry, 1);
    return read && !read->bytes.empty() ? read->bytes[0] : '\0';
}

} // namespace vell::metadata
