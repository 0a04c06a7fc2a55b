// What a call asks of a movie.
#pragma once

#include "src/params/switches.h"

#include <cstdint>

namespace vell::movies {

enum class MovieSelector : std::int32_t {
    None = 0,
    TimeCodeBegin = 1,
    TimeCodeEnd = 2,
    TimeCodeCurrent = 3,
    Duration = 4,
    Width = 100,
    Height = 101,
    Rotation = 102,
    FrameCount = 103,
    IsValid = 104,
    // From here on the boxes of the file answer.
    AllMetadata = 500,
    Boxes = 510,
    Gps = 600,
    CreationDate = 601,
    Title = 602,
    Comment = 703,
    Copyright = 704,
    DescriptionText = 705,
    Information = 707,
    Keywords = 708,
    Software = 710,
    Director = 711,
    Year = 712,
    EncodedBy = 713,
    LoopSetting = 714,
    LoopVariation = 715,
};

// How positions are written, and whether values come as XML.
enum class PositionFormat : std::uint8_t { Iso6709, Decimal, DegMinSecs };

struct MovieRequest {
    MovieSelector selector = MovieSelector::None;
    bool description = false;
    PositionFormat position = PositionFormat::Iso6709;
    bool as_xml = false;
    bool verbose = false; // says where each value comes from

    // What comes as objects where JSON is wanted.
    bool has_objects() const { return description || selector == MovieSelector::AllMetadata; }
    bool asks_for_anything() const { return selector != MovieSelector::None || description; }
};

MovieRequest movie_request_of(const params::SwitchSet& switches);

} // namespace vell::movies
