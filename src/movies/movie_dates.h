// Dates of movies.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::movies {

// The moment of a header's time, as "2019-07-24T08:25:57Z". Seconds count from 1904 in UTC; a count
// that would lie before 1970 comes from programs that count from then. nullopt for 0, which is no
// time, and beyond the year 9999.
struct HeaderDate {
    std::string text;
    bool counts_from_1970 = false;
};
std::optional<HeaderDate> header_date(std::uint64_t seconds);

// The date at the start of a text, such as "2019-07-24T10:25:57+0200" or "2019:07:24 10:25:57", as
// ISO 8601 writes it, with the time and the zone that it has. nullopt for a text without a month
// and a day.
std::optional<std::string> iso_date(std::string_view text);
// The four digits at its start.
std::optional<std::string> year_of(std::string_view text);

} // namespace vell::movies
