// The host's calendar: days counted from 1 January of year 1 (day 1), proleptic Gregorian; times of
// day and timestamps in seconds.
#pragma once

#include "console/model/decimal.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::console {

struct CivilDate {
    std::int32_t year = 1;
    std::int32_t month = 1;
    std::int32_t day = 1;
    friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

// Day number of a date; months and days outside their range are carried over ("month 14" is
// February of the next year, "day 0" the last day of the month before). Years far beyond any
// calendar are held at the ends of `CivilDate`'s range.
std::int64_t day_number(std::int64_t year, std::int64_t month, std::int64_t day);
CivilDate civil_date(std::int64_t day_number);
bool is_leap_year(std::int64_t year);
int days_in_month(std::int64_t year, int month);

// The dates that the host knows: years 1 to 4000.
inline constexpr std::int64_t first_day = 1;
inline constexpr std::int64_t last_day = 1'460'970;

// The host's text forms, in its English (United States) locale: "12/31/2020", "13:04:05" (hours may
// exceed 23 and the whole may be negative, fractions of a second follow a point) and
// "12/31/2020 1:04:05 PM". A year has at least four digits.
std::string date_text(std::int64_t day_number);
std::string time_text(const Decimal& seconds);
std::string time_stamp_text(const Decimal& seconds);

// The reverse. Dates are month, day and year, separated by "/", "-" or "."; a year of one or two
// digits is the one from 70 years before to 29 years after the current year. A time may lack its
// seconds and may end in AM or PM; minutes and seconds above 59 are carried over. A timestamp text
// may also use 24-hour time and may lack the time part (midnight).
std::optional<std::int64_t> parse_date(std::u16string_view text);
std::optional<Decimal> parse_time(std::u16string_view text);
std::optional<Decimal> parse_time_stamp(std::u16string_view text);

// A timestamp counts seconds so that day 1 begins at second 0: (day - 1) * 86400 + seconds of day.
inline constexpr std::int64_t seconds_per_day = 86400;

struct DayAndSeconds {
    std::int64_t day;
    Decimal seconds; // 0 to less than a day
};
DayAndSeconds split_time_stamp(const Decimal& seconds);
Decimal join_time_stamp(std::int64_t day, const Decimal& seconds);

} // namespace vell::console
