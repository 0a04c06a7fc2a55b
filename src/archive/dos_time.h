// Dates and times of archive entries: local time in steps of two seconds, from 1980 to 2107.
#pragma once

#include "src/params/calendar_time.h"

#include <cstdint>

namespace vell::archive {

struct DosTime {
    std::uint16_t date = 0;
    std::uint16_t time = 0;

    friend bool operator==(const DosTime&, const DosTime&) = default;
};

// Date and time 0 for a time outside the years that the format can express.
DosTime dos_time(const params::CalendarTime& local);

// Parts beyond their range carry over: month 0 is the December before, second 62 the next minute.
params::CalendarTime calendar_time(DosTime dos);

} // namespace vell::archive
