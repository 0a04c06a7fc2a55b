#include "src/movies/movie_metadata.h"

#include "src/base/number_text.h"
#include "src/base/xml_text.h"
#include "src/formats/isobmff/metadata_items.h"
#include "src/movies/faults.h"
#include "src/movies/iso6709.h"
#include "src/movies/item_names.h"
#include "src/movies/item_value.h"
#include "src/movies/movie_dates.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

namespace vell::movies {
namespace {

using namespace formats;
using namespace formats::isobmff;
using params::ComposedText;

// What is said of one item.
struct NamedText {
    std::string name;
    std::string key;
    std::string_view source;
    std::size_t track = 0;
    ItemText value;
};

// Nothing for one whose value is damaged.
Read<std::optional<NamedText>> named_text(const MetadataItem& item) {
    auto value = VELL_TRY(if_sound(item_text(item)));
    if (!value)
        return std::optional<NamedText>();
    return std::optional(NamedText{.name = item_name(item),
                                   .key = item_key(item),
                                   .source = source_name(item.source),
                                   .track = item.track,
                                   .value = *std::move(value)});
}

Result<void> coded(const Read<void>& read) {
    if (read)
        return {};
    return Failure{code_of(read.error(), ErrorCode::CorruptStructure)};
}

// The list as it grows, in lines or as XML.
class ItemList {
  public:
    ItemList(const MovieRequest& request, ComposedText& text) : request_(request), text_(text) {}

    void start() {
        if (request_.as_xml)
            text_.append("\r<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<movie_metadata>");
    }
    void finish() {
        if (request_.as_xml)
            text_.append("\r</movie_metadata>");
    }

    void add(const NamedText& item) {
        if (request_.as_xml)
            return add_element(item);
        text_.append(
            "\r" +
            (item.track > 0 ? "Track " + to_text(std::uint64_t{item.track}) + " " : std::string()) +
            item.name);
        if (request_.verbose)
            text_.append(" [" + std::string(item.source) + ", " + item.key +
                         (item.value.language.empty() ? "" : ", " + item.value.language) + "]");
        text_.append(": ");
        text_.append(item.value.bytes, item.value.encoding);
    }

  private:
    void add_element(const NamedText& item) {
        text_.append("\r<item");
        attribute("name", item.name);
        attribute("key", item.key);
        attribute("source", item.source);
        if (item.track > 0)
            attribute("track", to_text(std::uint64_t{item.track}));
        if (!item.value.language.empty())
            attribute("language", item.value.language);
        text_.append(">");
        text_.append(
            escaped_for_xml(item.value.bytes, item.value.encoding == params::TextEncoding::Utf8),
            item.value.encoding);
        text_.append("</item>");
    }
    void attribute(std::string_view name, std::string_view value) {
        text_.append(" " + std::string(name) + "=\"");
        text_.append(escaped_for_xml(value), params::TextEncoding::Utf8);
        text_.append("\"");
    }

    const MovieRequest& request_;
    ComposedText& text_;
};

void write_item(const NamedText& item, const params::TextDecoder& decode, JsonWriter& json) {
    json.begin_object();
    json.member("Name", item.name);
    json.member("Key", item.key);
    json.member("Source", item.source);
    if (item.track > 0)
        json.member_number("Track", item.track);
    if (!item.value.language.empty())
        json.member("Language", item.value.language);
    json.member("Value", decode(item.value.bytes, item.value.encoding));
    json.end_object();
}

// What a selector takes, the first of these names that any item has; of those the first in the
// movie.
std::span<const std::string_view> names_for(MovieSelector selector) {
    static constexpr std::string_view titles[] = {item::title, item::display_name};
    static constexpr std::string_view comments[] = {item::comment};
    static constexpr std::string_view copyrights[] = {item::copyright};
    static constexpr std::string_view descriptions[] = {item::description, item::long_description};
    static constexpr std::string_view information[] = {item::information};
    static constexpr std::string_view keywords[] = {item::keywords};
    static constexpr std::string_view software[] = {item::software, item::encoder};
    static constexpr std::string_view directors[] = {item::director};
    static constexpr std::string_view years[] = {item::year, item::date, item::creation_date};
    static constexpr std::string_view encoders[] = {item::encoded_by};
    static constexpr std::string_view loops[] = {item::loop};
    static constexpr std::string_view positions[] = {item::location};
    static constexpr std::string_view dates[] = {item::creation_date, item::date};
    switch (selector) {
    case MovieSelector::Title:
        return titles;
    case MovieSelector::Comment:
        return comments;
    case MovieSelector::Copyright:
        return copyrights;
    case MovieSelector::DescriptionText:
        return descriptions;
    case MovieSelector::Information:
        return information;
    case MovieSelector::Keywords:
        return keywords;
    case MovieSelector::Software:
        return software;
    case MovieSelector::Director:
        return directors;
    case MovieSelector::Year:
        return years;
    case MovieSelector::EncodedBy:
        return encoders;
    case MovieSelector::LoopSetting:
    case MovieSelector::LoopVariation:
        return loops;
    case MovieSelector::Gps:
        return positions;
    case MovieSelector::CreationDate:
        return dates;
    default:
        return {};
    }
}

// Of positions a key counts more than user data, and a text more than the numbers of "loci", which
// have fewer digits.
std::ptrdiff_t rank_of_place(MovieSelector selector, ItemSource source) {
    if (selector != MovieSelector::Gps || source == ItemSource::Keys)
        return 0;
    return source == ItemSource::Location ? 2 : 1;
}

// The best item for a selector that `fits`.
template <typename Predicate>
Result<std::optional<NamedText>> find_item(const MovieFile& movie, MovieSelector selector,
                                           const Predicate& fits) {
    const auto names = names_for(selector);
    std::optional<NamedText> best;
    constexpr std::ptrdiff_t places = 3;
    std::ptrdiff_t best_rank = places * std::ssize(names);
    const auto take = [&](const MetadataItem& item) -> Read<void> {
        if (item.source == ItemSource::Skipped)
            return {};
        const auto name = std::ranges::find(names, item_name(item)) - names.begin();
        const auto rank = places * name + rank_of_place(selector, item.source);
        if (rank >= best_rank)
            return {};
        auto text = VELL_TRY(named_text(item));
        if (!text || text->value.bytes.empty() || !fits(*text))
            return {};
        best = *std::move(text);
        best_rank = rank;
        return {};
    };
    VELL_TRY(coded(each_metadata_item(movie, take)));
    return best;
}

void append_item(const NamedText& item, const MovieRequest& request, ComposedText& text) {
    if (!request.as_xml && !request.verbose) {
        text.append("\r");
        text.append(item.value.bytes, item.value.encoding);
        return;
    }
    ItemList list(request, text);
    list.start();
    list.add(item);
    list.finish();
}

std::string position_text(const Position& position, PositionFormat format) {
    constexpr int digits = 10;
    if (format == PositionFormat::Iso6709)
        return iso6709_text(position);
    const bool is_decimal = format == PositionFormat::Decimal;
    std::string text = "Latitude: " +
                       (is_decimal ? to_text(position.latitude, digits)
                                   : degrees_minutes_seconds(position.latitude, 'N', 'S')) +
                       "\rLongitude: " +
                       (is_decimal ? to_text(position.longitude, digits)
                                   : degrees_minutes_seconds(position.longitude, 'E', 'W'));
    if (position.altitude)
        text += "\rAltitude: " + to_text(*position.altitude, digits) + (is_decimal ? "" : " m");
    return text;
}

Result<void> append_position(const MovieFile& movie, const MovieRequest& request,
                             ComposedText& text) {
    auto found = VELL_TRY(find_item(movie, request.selector, [](const NamedText& item) {
        return parse_iso6709(item.value.bytes).has_value();
    }));
    if (!found)
        return Failure{ErrorCode::NothingFound};
    const auto position = parse_iso6709(found->value.bytes);
    if (request.position != PositionFormat::Iso6709 || request.as_xml)
        found->value.bytes = position_text(*position, request.position);
    append_item(*std::move(found), request, text);
    return {};
}

// A date that names a day; else that of the movie's header; else whatever stands for a date.
Result<void> append_date(const MovieFile& movie, const MovieRequest& request, ComposedText& text) {
    auto found = VELL_TRY(find_item(movie, request.selector, [](const NamedText& item) {
        return iso_date(item.value.bytes).has_value();
    }));
    if (found) {
        found->value.bytes = *iso_date(found->value.bytes);
        append_item(*std::move(found), request, text);
        return {};
    }
    const auto whole = movie.read();
    if (!whole)
        return coded(Failure{whole.error()});
    if (const auto date = header_date(whole->header.creation_time)) {
        append_item({.name = std::string(item::creation_date),
                     .key = date->counts_from_1970 ? "mvhd, counted from 1970" : "mvhd",
                     .source = "movie header",
                     .value = {date->text}},
                    request, text);
        return {};
    }
    found = VELL_TRY(find_item(movie, request.selector, [](const NamedText&) { return true; }));
    if (!found)
        return Failure{ErrorCode::NothingFound};
    append_item(*std::move(found), request, text);
    return {};
}

// What "LOOP" holds: 0 for going round, 1 for to and fro (QuickTime File Format, "User Data
// Atoms"). Whether the movie loops at all is told by its presence.
Result<void> append_loop(const MovieFile& movie, const MovieRequest& request, ComposedText& text) {
    auto found =
        VELL_TRY(find_item(movie, request.selector, [](const NamedText&) { return true; }));
    if (request.selector == MovieSelector::LoopSetting) {
        text.append(found ? "\r1" : "\r0");
        return {};
    }
    if (!found)
        return Failure{ErrorCode::NothingFound};
    append_item(*std::move(found), request, text);
    return {};
}

} // namespace

Result<void> list_metadata(const MovieFile& movie, const MovieRequest& request,
                           ComposedText& text) {
    ItemList list(request, text);
    list.start();
    bool is_empty = true;
    const auto add = [&](const MetadataItem& item) -> Read<void> {
        const auto named = VELL_TRY(named_text(item));
        if (named && text.size() <= ComposedText::max_size) { // the caller refuses longer ones
            list.add(*named);
            is_empty = false;
        }
        return {};
    };
    VELL_TRY(coded(each_metadata_item(movie, add)));
    list.finish();
    return is_empty ? Result<void>(Failure{ErrorCode::NothingFound}) : Result<void>();
}

Result<void> list_metadata(const MovieFile& movie, const params::TextDecoder& decode,
                           JsonWriter& json) {
    std::uint64_t written = 0; // bytes, at least
    json.begin_array();
    const auto add = [&](const MetadataItem& item) -> Read<void> {
        const auto named = VELL_TRY(named_text(item));
        if (named && written <= ComposedText::max_size) { // the caller refuses longer ones
            write_item(*named, decode, json);
            written += named->value.bytes.size();
        }
        return {};
    };
    const Result<void> done = coded(each_metadata_item(movie, add));
    json.end_array();
    return done;
}

Result<void> answer_from_metadata(const MovieFile& movie, const MovieRequest& request,
                                  ComposedText& text) {
    switch (request.selector) {
    case MovieSelector::Gps:
        return append_position(movie, request, text);
    case MovieSelector::CreationDate:
        return append_date(movie, request, text);
    case MovieSelector::LoopSetting:
    case MovieSelector::LoopVariation:
        return append_loop(movie, request, text);
    default:
        break;
    }
    const bool wants_year = request.selector == MovieSelector::Year;
    auto found = VELL_TRY(find_item(movie, request.selector, [&](const NamedText& item) {
        return !wants_year || year_of(item.value.bytes).has_value();
    }));
    if (!found)
        return Failure{ErrorCode::NothingFound};
    if (wants_year)
        found->value.bytes = *year_of(found->value.bytes);
    append_item(*std::move(found), request, text);
    return {};
}

} // namespace vell::movies
