#include "src/movies/time_code.h"

#include "src/base/number_text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vell::movies {
namespace {

using namespace formats;
using namespace formats::isobmff;

std::string two_digits(std::int64_t number) {
    return (number < 10 ? "0" : "") + to_text(number);
}

// Numbers 0 and 1 of each minute are dropped but in every tenth, so that the code keeps up with a
// rate of 30000/1001 (two for each 30 frames per second).
std::int64_t with_dropped_numbers(std::int64_t frame, std::int64_t per_second) {
    const std::int64_t dropped = 2 * (per_second / 30);
    const std::int64_t in_minute = per_second * 60 - dropped;
    const std::int64_t in_ten_minutes = in_minute * 10 + dropped;
    const std::int64_t tens = frame / in_ten_minutes;
    const std::int64_t rest = frame % in_ten_minutes;
    const std::int64_t minutes = rest < per_second * 60 ? 0 : (rest - dropped) / in_minute;
    return frame + tens * 9 * dropped + minutes * dropped;
}

bool drops_numbers(const TimeCodeEntryRecord& format) {
    return (format.flags & TimeCodeEntryRecord::drop_frame) != 0 && format.frames_per_second >= 30;
}

// Frames that the track lasts.
std::int64_t frames_of(const Track& track, const TimeCodeEntryRecord& format) {
    constexpr double most = 1e15;
    const double seconds = track.seconds().value_or(0);
    if (format.frame_duration == 0)
        return 0;
    return std::llround(std::min(seconds * format.timescale / format.frame_duration, most));
}

} // namespace

std::string time_code_text(std::int64_t frame, const TimeCodeEntryRecord& format) {
    constexpr std::int64_t hours_of_day = 24;
    const std::int64_t per_second = format.frames_per_second;
    if ((format.flags & TimeCodeEntryRecord::counter) != 0 || per_second == 0)
        return to_text(frame);
    const bool drops = drops_numbers(format);
    std::int64_t number = std::abs(frame);
    if (drops)
        number = with_dropped_numbers(number, per_second);
    std::int64_t hours = number / (per_second * 3600);
    if ((format.flags & TimeCodeEntryRecord::wraps_at_24_hours) != 0)
        hours %= hours_of_day;
    return (frame < 0 ? "-" : "") + two_digits(hours) + ":" +
           two_digits(number / (per_second * 60) % 60) + ":" +
           two_digits(number / per_second % 60) + (drops ? ";" : ":") +
           two_digits(number % per_second);
}

Read<TimeCodes> read_time_codes(Window file, const Movie& movie) {
    const auto track = std::ranges::find_if(movie.tracks, [](const Track& candidate) {
        return candidate.entry && candidate.entry->time_code && candidate.first_chunk;
    });
    if (track == movie.tracks.end())
        return fault(Damage::Absent);
    const TimeCodeEntryRecord& format = *track->entry->time_code;
    file.seek(*track->first_chunk);
    const auto sample = VELL_TRY(if_sound(file.read_integer<std::uint32_t>(ByteOrder::Big)));
    if (!sample)
        return fault(Damage::Absent);
    const bool is_signed = (format.flags & TimeCodeEntryRecord::negative_times_allowed) != 0;
    const std::int64_t begin =
        is_signed ? std::int64_t{static_cast<std::int32_t>(*sample)} : std::int64_t{*sample};
    return TimeCodes{time_code_text(begin, format),
                     time_code_text(begin + frames_of(*track, format), format)};
}

} // namespace vell::movies
