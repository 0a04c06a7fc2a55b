// Time codes of movies (SMPTE ST 12-1; QuickTime File Format, "Timecode Media").
#pragma once

#include "src/formats/isobmff/movie.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vell::movies {

struct TimeCodes {
    std::string begin;
    std::string end; // of the moment behind the last frame
};

// Those of the first track with time codes. Its first sample, four bytes, is the only piece of
// media data that is read. Absent when there is no such track, or its sample is not in the file.
formats::Read<TimeCodes> read_time_codes(formats::Window file,
                                         const formats::isobmff::Movie& movie);

// "01:00:00:00", with ";" before the frames where numbers are dropped, or the number itself of what
// only counts.
std::string time_code_text(std::int64_t frame, const formats::isobmff::TimeCodeEntryRecord& format);

} // namespace vell::movies
