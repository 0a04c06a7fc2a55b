// A date and time of day by its parts, in the proleptic Gregorian calendar.
#pragma once

#include <cstdint>
#include <string>

namespace vell::params {

struct CalendarTime {
    std::int32_t year = 1;
    std::int32_t month = 1; // from 1
    std::int32_t day = 1;   // from 1
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;

    friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

// Days counted from 1 January of year 1, which is day 1. `month` must lie in 1 to 12.
std::int64_t day_number(const CalendarTime& time);
std::int64_t seconds_of_day(const CalendarTime& time);

// Such as "2024-05-06T07:08:09" (ISO 8601-1, section 5.4).
std::string iso_text(const CalendarTime& time);

} // namespace vell::params
