#include "src/params/calendar_time.h"

#include <chrono>

namespace vell::params {

std::int64_t day_number(const CalendarTime& time) {
    using namespace std::chrono;
    constexpr sys_days day_one = year(1) / January / 1;
    const sys_days first_of_month =
        year(time.year) / month(static_cast<unsigned>(time.month)) / day(1);
    return (first_of_month - day_one).count() + time.day;
}

std::int64_t seconds_of_day(const CalendarTime& time) {
    return (std::int64_t{time.hour} * 60 + time.minute) * 60 + time.second;
}

} // namespace vell::params
