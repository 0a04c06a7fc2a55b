#include "src/host/bridge/host_date_time.h"

namespace vell::host {

DateTime::DateTime(const params::CalendarTime& time)
    : HostObject(host_call(FM_DateTime_Constructor1)) {
    Number seconds;
    seconds.assign(params::seconds_of_day(time));
    host_call(FM_DateTime_SetDaysSinceEpoch, get(), params::day_number(time));
    host_call(FM_DateTime_SetSecsSinceMidnight, get(), seconds.get());
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
