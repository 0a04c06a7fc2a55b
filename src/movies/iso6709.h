// Positions on the earth as text (ISO 6709, annex H).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vell::movies {

// Degrees, positive to the north and to the east; metres above the sea.
struct Position {
    double latitude = 0;
    double longitude = 0;
    std::optional<double> altitude;
};

// "+48.2082+016.3738+171/", also with minutes, or minutes and seconds, in the same digits; what
// follows the solidus, or a coordinate system, is left out. nullopt for anything else, and for what
// lies beyond the poles or the date line.
std::optional<Position> parse_iso6709(std::string_view text);
std::string iso6709_text(const Position& position);
// "48° 12' 29.52" N"; negative degrees are S or W.
std::string degrees_minutes_seconds(double degrees, char positive, char negative);

} // namespace vell::movies
