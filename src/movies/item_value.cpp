#include "src/movies/item_value.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/movies/iso6709.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

namespace vell::movies {
namespace {

using namespace formats;
using namespace formats::isobmff;
using params::TextEncoding;

std::string sized(std::string_view kind, std::uint64_t bytes) {
    return "(" + std::string(kind) + (kind.empty() ? "" : ", ") + to_text(bytes) + " bytes)";
}

// The encodings of Macintosh's languages that are not written in Roman letters (QuickTime File
// Format, "Language Code Values").
struct LanguageEncoding {
    std::uint16_t language;
    TextEncoding encoding;
};
constexpr LanguageEncoding language_encodings[] = {
    {10, TextEncoding::HebrewMac},        {11, TextEncoding::ShiftJisMac},
    {12, TextEncoding::ArabicMac},        {14, TextEncoding::GreekMac},
    {17, TextEncoding::TurkishMac},       {18, TextEncoding::CentralEuropeMac},
    {19, TextEncoding::ChineseTradMac},   {20, TextEncoding::ArabicMac},
    {23, TextEncoding::KoreanMac},        {24, TextEncoding::CentralEuropeMac},
    {25, TextEncoding::CentralEuropeMac}, {26, TextEncoding::CentralEuropeMac},
    {27, TextEncoding::CentralEuropeMac}, {28, TextEncoding::CentralEuropeMac},
    {31, TextEncoding::ArabicMac},        {32, TextEncoding::CyrillicMac},
    {33, TextEncoding::ChineseSimpMac},   {37, TextEncoding::CentralEuropeMac},
    {38, TextEncoding::CentralEuropeMac}, {39, TextEncoding::CentralEuropeMac},
    {40, TextEncoding::CentralEuropeMac}, {41, TextEncoding::HebrewMac},
    {42, TextEncoding::CyrillicMac},      {43, TextEncoding::CyrillicMac},
    {44, TextEncoding::CyrillicMac},      {45, TextEncoding::CyrillicMac},
    {46, TextEncoding::CyrillicMac},
};

TextEncoding script_encoding(std::uint16_t language) {
    const auto* const found =
        std::ranges::find(language_encodings, language, &LanguageEncoding::language);
    return found == std::end(language_encodings) ? TextEncoding::AsciiMac : found->encoding;
}

std::string utf8_of_utf16(std::string_view bytes, ByteOrder order) {
    std::u16string units;
    for (std::size_t at = 0; const auto unit = load<std::uint16_t>(bytes, at, order); at += 2)
        units += static_cast<char16_t>(*unit);
    units.resize(std::min(units.find(u'\0'), units.size()));
    return utf8_from_utf16(units);
}

// Without the zero that ends it; UTF-16 by its byte order mark.
ItemText text_with_mark(std::string_view bytes, TextEncoding otherwise) {
    if (bytes.starts_with("\xFE\xFF"))
        return {utf8_of_utf16(bytes.substr(2), ByteOrder::Big), TextEncoding::Utf8, {}};
    if (bytes.starts_with("\xFF\xFE"))
        return {utf8_of_utf16(bytes.substr(2), ByteOrder::Little), TextEncoding::Utf8, {}};
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    const std::string_view text = bytes.substr(0, bytes.find('\0'));
    return {std::string(text), is_valid_utf8(text) ? TextEncoding::Utf8 : otherwise, {}};
}

ItemText text_in_language(std::string_view bytes, std::uint16_t language) {
    ItemText text =
        text_with_mark(bytes, is_macintosh_language(language) ? script_encoding(language)
                                                              : TextEncoding::AsciiMac);
    text.language = language_of(language);
    return text;
}

bool is_plain_text(std::string_view bytes) {
    const auto is_control = [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\r' && c != '\n';
    };
    const std::string_view text = bytes.substr(0, bytes.find_last_not_of('\0') + 1);
    return !text.empty() && is_valid_utf8(text) && std::ranges::none_of(text, is_control);
}

// Big-endian, of 1 to 8 bytes.
std::uint64_t unsigned_of(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}
std::int64_t signed_of(std::string_view bytes) {
    const unsigned unused = 64 - 8 * static_cast<unsigned>(bytes.size());
    return static_cast<std::int64_t>(unsigned_of(bytes) << unused) >> unused;
}

// One number or several; data that are longer than any type has come out by their size.
template <typename Float, typename Bits>
std::string floats_text(std::string_view bytes, int digits) {
    constexpr std::size_t most = 9; // a matrix
    if (bytes.empty() || bytes.size() % sizeof(Bits) != 0 || bytes.size() > most * sizeof(Bits))
        return sized("", bytes.size());
    std::string text;
    for (std::size_t at = 0; const auto bits = load<Bits>(bytes, at, ByteOrder::Big);
         at += sizeof(Bits))
        text += (text.empty() ? "" : " ") + to_text(std::bit_cast<Float>(*bits), digits);
    return text;
}

// "00:01:02.500".
std::string clock_text(std::uint64_t milliseconds) {
    const auto padded = [](std::uint64_t number, std::size_t digits) {
        std::string text = to_text(number);
        text.insert(0, digits - std::min(digits, text.size()), '0');
        return text;
    };
    return padded(milliseconds / 3'600'000, 2) + ":" + padded(milliseconds / 60'000 % 60, 2) + ":" +
           padded(milliseconds / 1000 % 60, 2) + "." + padded(milliseconds % 1000, 3);
}

// "3 of 6": "trkn" and "disk" have two bytes, the number and, mostly, the count.
std::string number_of_count(std::string_view bytes) {
    const auto number = load<std::uint16_t>(bytes, 2, ByteOrder::Big).value_or(0);
    const auto count = load<std::uint16_t>(bytes, 4, ByteOrder::Big).value_or(0);
    return to_text(std::uint64_t{number}) +
           (count > 0 ? " of " + to_text(std::uint64_t{count}) : "");
}

// The genres of ID3v1, by their number from 0 on.
constexpr std::array<std::string_view, 80> genres{
    "Blues",
    "Classic Rock",
    "Country",
    "Dance",
    "Disco",
    "Funk",
    "Grunge",
    "Hip-Hop",
    "Jazz",
    "Metal",
    "New Age",
    "Oldies",
    "Other",
    "Pop",
    "R&B",
    "Rap",
    "Reggae",
    "Rock",
    "Techno",
    "Industrial",
    "Alternative",
    "Ska",
    "Death Metal",
    "Pranks",
    "Soundtrack",
    "Euro-Techno",
    "Ambient",
    "Trip-Hop",
    "Vocal",
    "Jazz+Funk",
    "Fusion",
    "Trance",
    "Classical",
    "Instrumental",
    "Acid",
    "House",
    "Game",
    "Sound Clip",
    "Gospel",
    "Noise",
    "AlternRock",
    "Bass",
    "Soul",
    "Punk",
    "Space",
    "Meditative",
    "Instrumental Pop",
    "Instrumental Rock",
    "Ethnic",
    "Gothic",
    "Darkwave",
    "Techno-Industrial",
    "Electronic",
    "Pop-Folk",
    "Eurodance",
    "Dream",
    "Southern Rock",
    "Comedy",
    "Cult",
    "Gangsta",
    "Top 40",
    "Christian Rap",
    "Pop/Funk",
    "Jungle",
    "Native American",
    "Cabaret",
    "New Wave",
    "Psychadelic",
    "Rave",
    "Showtunes",
    "Trailer",
    "Lo-Fi",
    "Tribal",
    "Acid Punk",
    "Acid Jazz",
    "Polka",
    "Retro",
    "Musical",
    "Rock & Roll",
    "Hard Rock",
};

// "chpl": behind the version, and in all but the first version four bytes, the number of chapters;
// of each its begin in units of 100 ns, and a title with its length.
ItemText chapters_text(std::string_view bytes) {
    constexpr std::uint64_t in_millisecond = 10'000;
    const std::size_t start = bytes.starts_with('\0') ? 4 : 8;
    const auto count = load<std::uint8_t>(bytes, start, ByteOrder::Big);
    std::string text;
    std::size_t at = start + 1;
    for (unsigned i = 0; count && i < *count; ++i) {
        const auto begin = load<std::uint64_t>(bytes, at, ByteOrder::Big);
        const auto length = load<std::uint8_t>(bytes, at + sizeof(std::uint64_t), ByteOrder::Big);
        if (!begin || !length)
            break;
        at += sizeof(std::uint64_t) + 1;
        text += (text.empty() ? "" : "\r") + clock_text(*begin / in_millisecond) + " ";
        text += bytes.substr(std::min(at, bytes.size()), *length);
        at += *length;
    }
    return {text, is_valid_utf8(text) ? TextEncoding::Utf8 : TextEncoding::AsciiMac, {}};
}

// Of a type that only the item tells.
ItemText implicit_text(FourCc type, std::string_view bytes) {
    constexpr std::size_t longest_number = 8;
    if (type == "name"_4cc)
        return text_with_mark(bytes, TextEncoding::AsciiMac);
    if (type == "chpl"_4cc)
        return chapters_text(bytes);
    if (type == "trkn"_4cc || type == "disk"_4cc)
        return {number_of_count(bytes)};
    if (const auto genre = load<std::uint16_t>(bytes, 0, ByteOrder::Big);
        type == "gnre"_4cc && genre && *genre > 0 && *genre <= genres.size())
        return {std::string(genres[*genre - 1U])};
    if (is_plain_text(bytes))
        return text_with_mark(bytes, TextEncoding::AsciiMac);
    if (!bytes.empty() && bytes.size() <= longest_number)
        return {to_text(unsigned_of(bytes))};
    return {sized("", bytes.size())};
}

ItemText typed_text(FourCc type, ValueType value_type, std::string_view bytes) {
    const bool fits_integer = !bytes.empty() && bytes.size() <= sizeof(std::uint64_t);
    switch (static_cast<std::uint32_t>(value_type)) {
    case 1:
    case 4: // for sorting
        return text_with_mark(bytes, TextEncoding::AsciiMac);
    case 2:
    case 5:
        return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")
                   ? text_with_mark(bytes, TextEncoding::Utf8)
                   : ItemText{utf8_of_utf16(bytes, ByteOrder::Big)};
    case 3:
        return {std::string(bytes), TextEncoding::ShiftJisMac, {}};
    case 13:
        return {sized("JPEG picture", bytes.size())};
    case 14:
        return {sized("PNG picture", bytes.size())};
    case 27:
        return {sized("BMP picture", bytes.size())};
    case 21:
    case 65:
    case 66:
    case 67:
    case 74:
        return {fits_integer ? to_text(signed_of(bytes)) : sized("", bytes.size())};
    case 22:
    case 75:
    case 76:
    case 77:
    case 78:
        return {fits_integer ? to_text(unsigned_of(bytes)) : sized("", bytes.size())};
    case 23:
    case 70: // a point, a size, a rectangle
    case 71:
    case 72:
        return {floats_text<float, std::uint32_t>(bytes, 6)};
    case 24:
    case 79: // a matrix
        return {floats_text<double, std::uint64_t>(bytes, 15)};
    default:
        return implicit_text(type, bytes);
    }
}

// A language and a text; some have a number before, between or behind.
Read<ItemText> asset_text(FourCc type, Window value) {
    constexpr std::uint64_t entity_size = 4;
    if (type == "yrrc"_4cc)
        return ItemText{
            to_text(std::uint64_t{VELL_TRY(value.read_integer<std::uint16_t>(ByteOrder::Big))})};
    if (type == "thmb"_4cc)
        return ItemText{sized("picture", value.announced())};
    if (type == "rtng"_4cc)
        value.skip(2 * entity_size);
    if (type == "clsf"_4cc)
        value.skip(entity_size + sizeof(std::uint16_t));
    const auto language = VELL_TRY(value.read_integer<std::uint16_t>(ByteOrder::Big));
    if (type != "kywd"_4cc)
        return text_in_language(VELL_TRY(value.read_bytes(value.remaining())), language);
    ItemText keywords;
    keywords.language = language_of(language);
    const auto count = VELL_TRY(value.read_integer<std::uint8_t>(ByteOrder::Big));
    for (unsigned i = 0; i < count; ++i) {
        const auto size = VELL_TRY(value.read_integer<std::uint8_t>(ByteOrder::Big));
        const std::string bytes = VELL_TRY(value.read_bytes(size));
        keywords.bytes += (i > 0 ? ", " : "") + text_in_language(bytes, language).bytes;
    }
    return keywords;
}

Read<ItemText> location_text(const Window& value) {
    const LocationInformation location = VELL_TRY(read_location(value));
    ItemText text{iso6709_text({location.latitude, location.longitude, location.altitude})};
    text.language = language_of(location.language);
    if (const ItemText name = text_with_mark(location.name, TextEncoding::AsciiMac);
        !name.bytes.empty() && name.encoding == TextEncoding::Utf8)
        text.bytes += " (" + name.bytes + ")";
    return text;
}

} // namespace

Read<ItemText> item_text(const MetadataItem& item) {
    if (item.source == ItemSource::Skipped)
        return ItemText{"Moviebox version too high, skipped moviebox"};
    if (item.value.announced() > MetadataItem::longest_value)
        return ItemText{sized("", item.value.announced())};
    if (item.source == ItemSource::Asset)
        return asset_text(item.type, item.value);
    if (item.source == ItemSource::Location)
        return location_text(item.value);
    Window value = item.value;
    const std::string bytes = VELL_TRY(value.read_bytes(value.size()));
    ItemText text;
    switch (item.source) {
    case ItemSource::UserText:
        if (item.value_type == ValueType::Utf8)
            return item.has_language ? text_in_language(bytes, item.language)
                                     : text_with_mark(bytes, TextEncoding::AsciiMac);
        [[fallthrough]];
    case ItemSource::Itunes:
    case ItemSource::Keys:
        text = typed_text(item.type, item.value_type, bytes);
        if (item.has_language)
            text.language = language_of(item.language);
        return text;
    case ItemSource::Xmp:
        return text_with_mark(bytes, TextEncoding::Utf8);
    default:
        return implicit_text(item.type, bytes);
    }
}

} // namespace vell::movies
