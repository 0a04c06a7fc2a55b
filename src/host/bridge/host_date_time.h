// Dates and times of the host.
#pragma once

#include "src/host/bridge/host_number.h"
#include "src/params/calendar_time.h"

#include <cstdint>

namespace vell::host {

// A date, a time of day, or both.
class DateTime : public HostObject<fm::DateTime> {
  public:
    explicit DateTime(const params::CalendarTime& time);
};

params::CalendarTime to_calendar_time(const fm::DateTime* date_time);

} // namespace vell::host
