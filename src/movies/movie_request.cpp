#include "src/movies/movie_request.h"

#include <string_view>

namespace vell::movies {
namespace {

struct MovieSwitch {
    std::string_view name;
    MovieSelector selector;
};
// The first one present counts.
constexpr MovieSwitch movie_switches[] = {
    {"-GetMovieDuration", MovieSelector::Duration},
    {"-GetTimeCodeBegin", MovieSelector::TimeCodeBegin},
    {"-GetTimeCodeEnd", MovieSelector::TimeCodeEnd},
    {"-GetTimeCodeCurrent", MovieSelector::TimeCodeCurrent},
    {"-GetMovieGPS", MovieSelector::Gps},
    {"-GetMovieCreationDate", MovieSelector::CreationDate},
    {"-GetMovieMetadata", MovieSelector::AllMetadata},
    {"-GetMovieBoxes", MovieSelector::Boxes},
    {"-GetMovieTitle", MovieSelector::Title},
    {"-GetMovDescriptionStr", MovieSelector::DescriptionText},
    {"-GetMovieKeywords", MovieSelector::Keywords},
    {"-GetMovieComment", MovieSelector::Comment},
    {"-GetMovieInformation", MovieSelector::Information},
    {"-GetMovieDirector", MovieSelector::Director},
    {"-GetMovieSoftware", MovieSelector::Software},
    {"-GetMovieYear", MovieSelector::Year},
    {"-GetMovieEncodedBy", MovieSelector::EncodedBy},
    {"-GetMovieLoopSetting", MovieSelector::LoopSetting},
    {"-GetMovieLoopVariation", MovieSelector::LoopVariation},
    {"-GetMovieWidth", MovieSelector::Width},
    {"-GetMovieHeight", MovieSelector::Height},
    {"-GetMovieRotation", MovieSelector::Rotation},
    {"-GetMovieFrameCount", MovieSelector::FrameCount},
    {"-IsValidMovie", MovieSelector::IsValid},
    {"-GetMovieCopyright", MovieSelector::Copyright},
};

MovieSelector selector_of(const params::SwitchSet& switches) {
    for (const MovieSwitch& entry : movie_switches)
        if (switches.has(entry.name))
            return entry.selector;
    return MovieSelector::None;
}

PositionFormat position_format_of(const params::SwitchSet& switches) {
    if (switches.has("-Format=Decimal"))
        return PositionFormat::Decimal;
    return switches.has("-Format=DegMinSecs") ? PositionFormat::DegMinSecs
                                              : PositionFormat::Iso6709;
}

} // namespace

MovieRequest movie_request_of(const params::SwitchSet& switches) {
    MovieRequest request;
    request.selector = selector_of(switches);
    request.description = switches.has("-GetMovieDescription");
    request.position = position_format_of(switches);
    request.as_xml = switches.has("-Format=XML");
    request.verbose = switches.has("-Verbose");
    return request;
}

} // namespace vell::movies
