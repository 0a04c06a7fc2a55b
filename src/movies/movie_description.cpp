#include "src/movies/movie_description.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/formats/isobmff/metadata_items.h"
#include "src/movies/codec_names.h"
#include "src/movies/faults.h"
#include "src/movies/movie_dates.h"
#include "src/movies/time_code.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vell::movies {
namespace {

using namespace formats::isobmff;
using params::ComposedText;
using params::TextEncoding;

constexpr int time_digits = 10;
constexpr int rate_digits = 6;

bool has_pictures(const Track& track) {
    return entry_kind_of(track.handler) == EntryKind::Picture && track.handler != "auxv"_4cc;
}

// Frames per second, on the average.
std::optional<double> frame_rate(const Track& track) {
    const auto seconds = track.seconds();
    const std::uint64_t samples = track.sample_count();
    if (!seconds || *seconds <= 0 || samples == 0)
        return std::nullopt;
    return static_cast<double>(samples) / *seconds;
}

std::uint64_t bits_per_second(std::uint64_t bytes, double seconds) {
    constexpr double most = 1e18;
    return static_cast<std::uint64_t>(
        std::llround(std::min(static_cast<double>(bytes) * 8 / seconds, most)));
}

// Bits per second: what the samples take, or what their decoder was told.
std::optional<std::uint64_t> bit_rate(const Track& track) {
    const auto seconds = track.seconds();
    const auto bytes = track.bytes();
    if (bytes && *bytes > 0 && seconds && *seconds > 0)
        return bits_per_second(*bytes, *seconds);
    if (track.entry && track.entry->average_bit_rate)
        return *track.entry->average_bit_rate;
    if (track.entry && track.entry->decoder && track.entry->decoder->average_bit_rate > 0)
        return track.entry->decoder->average_bit_rate;
    return std::nullopt;
}

struct Size {
    std::uint64_t width = 0;
    std::uint64_t height = 0;

    bool operator==(const Size&) const = default;
};

// Of the pictures as they are coded; as they are presented where that is all there is.
std::optional<Size> coded_size(const Track& track) {
    if (track.entry && track.entry->picture && track.entry->picture->width > 0)
        return Size{track.entry->picture->width, track.entry->picture->height};
    if (track.width >= 1 && track.height >= 1)
        return Size{static_cast<std::uint64_t>(track.width),
                    static_cast<std::uint64_t>(track.height)};
    return std::nullopt;
}

// As it is shown: pixels that are not square stretched, turned upright.
std::optional<Size> shown_size(const Track& track) {
    auto size = coded_size(track);
    if (!size)
        return size;
    if (track.width >= 1 && track.height >= 1)
        size = Size{static_cast<std::uint64_t>(std::lround(track.width)),
                    static_cast<std::uint64_t>(std::lround(track.height))};
    if (rotation_of(track) % 180 == 90)
        std::swap(size->width, size->height);
    return size;
}

// Takes what is said of a movie or a track, one thing after the other. Empty texts say nothing.
class Facts {
  public:
    Facts() = default;
    Facts(const Facts&) = delete;
    Facts& operator=(const Facts&) = delete;
    virtual ~Facts() = default;

    virtual void add(std::string_view name, std::string_view value) = 0;
    virtual void add(std::string_view name, std::uint64_t value) = 0;
    virtual void add_number(std::string_view name, double value, int digits) = 0;
    virtual void add_flag(std::string_view name, bool is_true) = 0;
    virtual void add_list(std::string_view name, const std::vector<std::string>& values) = 0;
    // Bytes of the file.
    virtual void add_bytes(std::string_view name, std::string_view bytes) = 0;

    void add_number(std::string_view name, std::optional<double> value, int digits) {
        if (value)
            add_number(name, *value, digits);
    }
};

// Which are UTF-8 or of the old Macintosh.
TextEncoding encoding_of_bytes(std::string_view bytes) {
    return is_valid_utf8(bytes) ? TextEncoding::Utf8 : TextEncoding::AsciiMac;
}

class Lines : public Facts {
  public:
    Lines(ComposedText& text, std::string prefix) : text_(text), prefix_(std::move(prefix)) {}

    using Facts::add_number;
    void add(std::string_view name, std::string_view value) override {
        if (!value.empty())
            start(name).append(value);
    }
    void add(std::string_view name, std::uint64_t value) override { add(name, to_text(value)); }
    void add_number(std::string_view name, double value, int digits) override {
        add(name, to_text(value, digits));
    }
    void add_flag(std::string_view name, bool is_true) override { add(name, is_true ? "1" : "0"); }
    void add_list(std::string_view name, const std::vector<std::string>& values) override {
        std::string text;
        for (const std::string& value : values)
            text += (text.empty() ? "" : ", ") + value;
        add(name, text);
    }
    void add_bytes(std::string_view name, std::string_view bytes) override {
        if (!bytes.empty())
            start(name).append(bytes, encoding_of_bytes(bytes));
    }

  private:
    ComposedText& start(std::string_view name) const {
        text_.append("\r" + prefix_ + std::string(name) + ": ");
        return text_;
    }

    ComposedText& text_;
    std::string prefix_;
};

// Members of the object that is open.
class Members : public Facts {
  public:
    Members(JsonWriter& json, const params::TextDecoder& decode) : json_(json), decode_(decode) {}

    using Facts::add_number;
    void add(std::string_view name, std::string_view value) override {
        if (!value.empty())
            json_.member(member_name(name), value);
    }
    void add(std::string_view name, std::uint64_t value) override {
        json_.member_number(member_name(name), value);
    }
    void add_number(std::string_view name, double value, int) override {
        json_.member_number(member_name(name), value);
    }
    void add_flag(std::string_view name, bool is_true) override {
        json_.member_boolean(member_name(name), is_true);
    }
    void add_list(std::string_view name, const std::vector<std::string>& values) override {
        json_.key(member_name(name));
        json_.begin_array();
        for (const std::string& value : values)
            json_.value(value);
        json_.end_array();
    }
    void add_bytes(std::string_view name, std::string_view bytes) override {
        if (!bytes.empty())
            json_.member(member_name(name), decode_(bytes, encoding_of_bytes(bytes)));
    }

  private:
    JsonWriter& json_;
    const params::TextDecoder& decode_;
};

void describe_type(const Movie& movie, Facts& facts) {
    if (!movie.file_type) {
        facts.add("Format", "QuickTime"); // whose files need not say so
        return;
    }
    facts.add("Format", brand_name(movie.file_type->major_brand));
    facts.add("Brand", text_of(movie.file_type->major_brand));
    std::vector<std::string> brands;
    for (const FourCc brand : movie.file_type->compatible_brands)
        brands.push_back(text_of(brand));
    facts.add_list("Compatible brands", brands);
}

void describe_pictures(const Track& track, Facts& facts) {
    const auto size = coded_size(track);
    if (size) {
        facts.add("Width", size->width);
        facts.add("Height", size->height);
    }
    if (const auto shown = shown_size(track); shown && shown != size) {
        facts.add("Shown width", shown->width);
        facts.add("Shown height", shown->height);
    }
    facts.add("Rotation", static_cast<std::uint64_t>(rotation_of(track)));
    facts.add_number("Frame rate", frame_rate(track), rate_digits);
    facts.add("Frame count", track.sample_count());
}

std::string date_text(std::uint64_t seconds) {
    const auto date = header_date(seconds);
    return date ? date->text : std::string();
}

void describe_whole(const Movie& movie, std::uint64_t file_size, Facts& facts) {
    describe_type(movie, facts);
    const auto seconds = movie.seconds();
    facts.add_number("Duration (seconds)", seconds, time_digits);
    if (const Track* const track = picture_track(movie))
        describe_pictures(*track, facts);
    if (seconds && *seconds > 0)
        facts.add("Bit rate", bits_per_second(file_size, *seconds));
    facts.add("Creation date", date_text(movie.header.creation_time));
    facts.add("Modification date", date_text(movie.header.modification_time));
    facts.add("Time scale", std::uint64_t{movie.header.timescale});
    facts.add_flag("Plays while loading", movie.is_before_its_media);
    facts.add("Fragments", movie.fragment_count);
    if (movie.header_is_compressed)
        facts.add_flag("Compressed header", true);
    facts.add("Track count", movie.track_count);
}

void describe_sound(const Sound& sound, Facts& facts) {
    if (sound.channels > 0)
        facts.add("Channels", std::uint64_t{sound.channels});
    if (sound.sample_rate > 0)
        facts.add_number("Sample rate", sound.sample_rate, time_digits);
    if (sound.sample_size > 0)
        facts.add("Sample size", std::uint64_t{sound.sample_size});
}

void describe_track(const Track& track, Facts& facts) {
    facts.add("Kind", kind_name(track.handler));
    facts.add("Handler", text_of(track.handler));
    facts.add_bytes("Name", track.handler_name);
    facts.add("ID", std::uint64_t{track.id});
    facts.add_flag("Enabled", track.is_enabled);
    if (track.entry) {
        facts.add("Codec name", codec_name(*track.entry));
        facts.add("Codec type", text_of(track.entry->codec()));
        if (track.entry->original_format)
            facts.add("Encrypted", text_of(track.entry->format));
    }
    if (entry_kind_of(track.handler) == EntryKind::Picture)
        describe_pictures(track, facts);
    else
        facts.add("Sample count", track.sample_count());
    if (track.entry && track.entry->picture) {
        facts.add("Depth", std::uint64_t{track.entry->picture->depth});
        facts.add_bytes("Compressor", track.entry->picture->compressor_name);
    }
    if (track.entry && track.entry->sound)
        describe_sound(*track.entry->sound, facts);
    facts.add_number("Duration (seconds)", track.seconds(), time_digits);
    if (const auto rate = bit_rate(track))
        facts.add("Bit rate", *rate);
    facts.add("Language", language_of(track.language));
}

Result<std::string> number_or_nothing(std::optional<std::uint64_t> number) {
    if (!number)
        return Failure{ErrorCode::NothingFound};
    return to_text(*number);
}

Result<std::string> picture_value(const Track& track, MovieSelector selector) {
    const auto size = coded_size(track);
    switch (selector) {
    case MovieSelector::Width:
        return number_or_nothing(size ? std::optional(size->width) : std::nullopt);
    case MovieSelector::Height:
        return number_or_nothing(size ? std::optional(size->height) : std::nullopt);
    case MovieSelector::Rotation:
        return to_text(std::int64_t{rotation_of(track)});
    default:
        return to_text(track.sample_count());
    }
}

} // namespace

void describe_movie(const Movie& movie, std::uint64_t file_size, ComposedText& text) {
    Lines lines(text, "");
    describe_whole(movie, file_size, lines);
    std::uint64_t number = 0;
    for (const Track& track : movie.tracks) {
        Lines of_track(text, "Track " + to_text(++number) + " ");
        describe_track(track, of_track);
    }
}

void describe_movie(const Movie& movie, std::uint64_t file_size, const params::TextDecoder& decode,
                    JsonWriter& json) {
    Members members(json, decode);
    json.begin_object();
    describe_whole(movie, file_size, members);
    json.key("Tracks");
    json.begin_array();
    for (const Track& track : movie.tracks) {
        json.begin_object();
        describe_track(track, members);
        json.end_object();
    }
    json.end_array();
    json.end_object();
}

const Track* picture_track(const Movie& movie) {
    auto found = std::ranges::find_if(
        movie.tracks, [](const Track& track) { return track.is_enabled && has_pictures(track); });
    if (found == movie.tracks.end())
        found = std::ranges::find_if(movie.tracks, has_pictures);
    return found == movie.tracks.end() ? nullptr : &*found;
}

Result<std::string> movie_value(const formats::Window& file, const Movie& movie,
                                MovieSelector selector) {
    const Track* const pictures = picture_track(movie);
    switch (selector) {
    case MovieSelector::IsValid:
        return movie.tracks.empty() ? Result<std::string>(Failure{ErrorCode::NothingFound})
                                    : Result<std::string>("1");
    case MovieSelector::Duration:
        if (const auto seconds = movie.seconds())
            return to_text(*seconds, time_digits);
        return Failure{ErrorCode::NothingFound};
    case MovieSelector::TimeCodeBegin:
    case MovieSelector::TimeCodeCurrent: // no player is at any other moment
    case MovieSelector::TimeCodeEnd: {
        const auto codes = read_time_codes(file, movie);
        if (!codes)
            return Failure{code_of(codes.error(), ErrorCode::NothingFound)};
        return selector == MovieSelector::TimeCodeEnd ? codes->end : codes->begin;
    }
    default:
        if (pictures == nullptr)
            return Failure{ErrorCode::NothingFound};
        return picture_value(*pictures, selector);
    }
}

int rotation_of(const Track& track) {
    constexpr double right_angle = 90;
    const double angle = std::atan2(track.matrix[1], track.matrix[0]) * 180 / std::numbers::pi;
    const int quarters = static_cast<int>(std::lround(angle / right_angle));
    return (quarters + 4) % 4 * 90;
}

} // namespace vell::movies
