#include "src/host/bridge/host_date_time.h"

namespace vell::host {

DateTime::DateTime() : HostObject(host_call(FM_DateTime_Constructor1)) {}

DateTime::DateTime(const params::CalendarTime& time) : DateTime() {
    set_day_number(params::day_number(time));
    set_seconds_of_day(params::seconds_of_day(time));
}

void DateTime::set_day_number(std::int64_t day) {
    host_call(FM_DateTime_SetDaysSinceEpoch, get(), day);
}

void DateTime::set_seconds_of_day(std::int64_t seconds) {
    Number number;
    number.assign(seconds);
    host_call(FM_DateTime_SetSecsSinceMidnight, get(), number.get());
}

void DateTime::set_seconds(std::int64_t seconds) {
    Number number;
    number.assign(seconds);
    host_call(FM_DateTime_SetSecondsSinceEpoch, get(), number.get());
}

void DateTime::set_date(const DateTime& other) {
    host_call(FM_DateTime_SetDate, get(), other.get());
}

void DateTime::set_time(const DateTime& other) {
    host_call(FM_DateTime_SetTime, get(), other.get());
}

std::int64_t day_number(const fm::DateTime* date_time) {
    return host_call(FM_DateTime_GetDaysSinceEpoch, date_time);
}

std::int64_t seconds_of_day(const fm::DateTime* date_time) {
    Number seconds;
    host_call(FM_DateTime_GetSecsSinceMidnight, date_time, seconds.get());
    return to_integer(seconds.get());
}

params::CalendarTime to_calendar_time(const fm::DateTime* date_time) {
    return {
        .year = host_call(FM_DateTime_GetYear, date_time),
        .month = host_call(FM_DateTime_GetMonth, date_time),
        .day = host_call(FM_DateTime_GetDay, date_time),
        .hour = host_call(FM_DateTime_GetHour, date_time),
        .minute = host_call(FM_DateTime_GetMinute, date_time),
        .second = host_call(FM_DateTime_GetSec, date_time),
    };
}

} // namespace vell::host
