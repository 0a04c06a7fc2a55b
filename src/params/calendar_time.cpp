#include "src/params/calendar_time.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

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

std::string iso_text(const CalendarTime& time) {
    const auto padded = [](std::int32_t number, std::size_t digits) {
        const std::string text = std::to_string(number);
        return std::string(digits - std::min(digits, text.size()), '0') + text;
    };
    return padded(time.year, 4) + "-" + padded(time.month, 2) + "-" + padded(time.day, 2) + "T" +
           padded(time.hour, 2) + ":" + padded(time.minute, 2) + ":" + padded(time.second, 2);
}

} // namespace vell::params
