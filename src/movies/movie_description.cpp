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

class Lines {
  public:
    Lines(ComposedText& text, std::string prefix) : text_(text), prefix_(std::move(prefix)) {}

    void add(std::string_view name, std::string_view value) const {
        if (!value.empty())
            start(name).append(value);
    }
    void add(std::string_view name, std::uint64_t value) const { add(name, to_text(value)); }
    void add(std::string_view name, std::optional<double> value, int digits) const {
        if (value)
            add(name, to_text(*value, digits));
    }
    // Bytes of the file, which are UTF-8 or of the old Macintosh.
    void add_bytes(std::string_view name, std::string_view bytes) const {
        if (!bytes.empty())
            start(name).append(bytes,
                               is_valid_utf8(bytes) ? TextEncoding::Utf8 : TextEncoding::AsciiMac);
    }

  private:
    ComposedText& start(std::string_view name) const {
        text_.append("\r" + prefix_ + std::string(name) + ": ");
        return text_;
    }

    ComposedText& text_;
    std::string prefix_;
};

std::string brands_text(const FileType& type) {
    std::string text;
    for (const FourCc brand : type.compatible_brands)
        text += (text.empty() ? "" : ", ") + text_of(brand);
    return text;
}

void describe_type(const Movie& movie, const Lines& lines) {
    if (!movie.file_type) {
        lines.add("Format", "QuickTime"); // whose files need not say so
        return;
    }
    lines.add("Format", brand_name(movie.file_type->major_brand));
    lines.add("Brand", text_of(movie.file_type->major_brand));
    lines.add("Compatible brands", brands_text(*movie.file_type));
}

void describe_pictures(const Track& track, const Lines& lines) {
    const auto size = coded_size(track);
    if (size) {
        lines.add("Width", size->width);
        lines.add("Height", size->height);
    }
    if (const auto shown = shown_size(track); shown && shown != size) {
        lines.add("Shown width", shown->width);
        lines.add("Shown height", shown->height);
    }
    lines.add("Rotation", static_cast<std::uint64_t>(rotation_of(track)));
    lines.add("Frame rate", frame_rate(track), rate_digits);
    lines.add("Frame count", track.sample_count());
}

std::string date_text(std::uint64_t seconds) {
    const auto date = header_date(seconds);
    return date ? date->text : std::string();
}

void describe_whole(const Movie& movie, std::uint64_t file_size, const Lines& lines) {
    describe_type(movie, lines);
    const auto seconds = movie.seconds();
    lines.add("Duration (seconds)", seconds, time_digits);
    if (const Track* const track = picture_track(movie))
        describe_pictures(*track, lines);
    if (seconds && *seconds > 0)
        lines.add("Bit rate", bits_per_second(file_size, *seconds));
    lines.add("Creation date", date_text(movie.header.creation_time));
    lines.add("Modification date", date_text(movie.header.modification_time));
    lines.add("Time scale", std::uint64_t{movie.header.timescale});
    lines.add("Plays while loading", movie.is_before_its_media ? "1" : "0");
    lines.add("Fragments", movie.fragment_count);
    if (movie.header_is_compressed)
        lines.add("Compressed header", "1");
    lines.add("Track count", movie.track_count);
}

void describe_sound(const Sound& sound, const Lines& lines) {
    if (sound.channels > 0)
        lines.add("Channels", std::uint64_t{sound.channels});
    if (sound.sample_rate > 0)
        lines.add("Sample rate", sound.sample_rate, time_digits);
    if (sound.sample_size > 0)
        lines.add("Sample size", std::uint64_t{sound.sample_size});
}

void describe_track(const Track& track, const Lines& lines) {
    lines.add("Kind", kind_name(track.handler));
    lines.add("Handler", text_of(track.handler));
    lines.add_bytes("Name", track.handler_name);
    lines.add("ID", std::uint64_t{track.id});
    lines.add("Enabled", track.is_enabled ? "1" : "0");
    if (track.entry) {
        lines.add("Codec name", codec_name(*track.entry));
        lines.add("Codec type", text_of(track.entry->codec()));
        if (track.entry->original_format)
            lines.add("Encrypted", text_of(track.entry->format));
    }
    if (entry_kind_of(track.handler) == EntryKind::Picture)
        describe_pictures(track, lines);
    else
        lines.add("Sample count", track.sample_count());
    if (track.entry && track.entry->picture) {
        lines.add("Depth", std::uint64_t{track.entry->picture->depth});
        lines.add_bytes("Compressor", track.entry->picture->compressor_name);
    }
    if (track.entry && track.entry->sound)
        describe_sound(*track.entry->sound, lines);
    lines.add("Duration (seconds)", track.seconds(), time_digits);
    if (const auto rate = bit_rate(track))
        lines.add("Bit rate", *rate);
    lines.add("Language", language_of(track.language));
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
    describe_whole(movie, file_size, Lines(text, ""));
    std::uint64_t number = 0;
    for (const Track& track : movie.tracks)
        describe_track(track, Lines(text, "Track " + to_text(++number) + " "));
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
