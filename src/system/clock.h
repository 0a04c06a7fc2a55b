// The time.
#pragma once

#include "src/params/calendar_time.h"

#include <cstdint>

namespace vell::files {

class Clock {
  public:
    virtual ~Clock() = default;

    // Since the system was started; never goes back.
    virtual std::uint64_t milliseconds() = 0;
    virtual params::CalendarTime local_time() = 0;
};

} // namespace vell::files
