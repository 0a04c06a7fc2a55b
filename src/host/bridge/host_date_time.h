// Dates and times of the host.
#pragma once

#include "src/host/bridge/host_number.h"
#include "src/params/calendar_time.h"

#include <cstdint>

namespace vell::host {

// A date, a time of day, or both.
class DateTime : public HostObject<fm::DateTime> {
  public:
    DateTime();
    explicit DateTime(const params::CalendarTime& time);

    void set_day_number(std::int64_t day); // day 1 is 1 January of year 1
    void set_seconds_of_day(std::int64_t seconds);
    void set_seconds(std::int64_t seconds); // day 1 begins at second 0
    void set_date(const DateTime& other);   // keeps the time of day
    void set_time(const DateTime& other);   // keeps the date
};

std::int64_t day_number(const fm::DateTime* date_time);
std::int64_t seconds_of_day(const fm::DateTime* date_time);
params::CalendarTime to_calendar_time(const fm::DateTime* date_time);

} // namespace vell::host
