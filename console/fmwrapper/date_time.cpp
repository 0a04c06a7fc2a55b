// Dates, times and timestamps.
#include "console/fmwrapper/objects.h"

#include <algorithm>
#include <limits>

using namespace vell;
using console::checked;
using console::guarded;

namespace {

template <typename Integer>
Integer saturated(std::int64_t value) {
    using Limits = std::numeric_limits<Integer>;
    return static_cast<Integer>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// Whole seconds; of a negative time every part is negative.
std::int64_t whole_seconds(const fm::DateTime* self) {
    return checked(self).seconds.to_int64();
}

} // namespace

fm::DateTime* FM_DateTime_Constructor1(fm::Status* status) {
    return console::create<fm::DateTime>(__func__, status);
}

void FM_DateTime_Delete(fm::DateTime* self, fm::Status* status) {
    console::destroy(self, status);
}

std::int16_t FM_DateTime_GetYear(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return saturated<std::int16_t>(console::civil_date(checked(self).day).year);
    });
}

std::int16_t FM_DateTime_GetMonth(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return static_cast<std::int16_t>(console::civil_date(checked(self).day).month);
    });
}

std::int16_t FM_DateTime_GetDay(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        return static_cast<std::int16_t>(console::civil_date(checked(self).day).day);
    });
}

std::int32_t FM_DateTime_GetHour(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return saturated<std::int32_t>(whole_seconds(self) / 3600); });
}

std::int16_t FM_DateTime_GetMinute(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return static_cast<std::int16_t>(whole_seconds(self) / 60 % 60); });
}

std::int16_t FM_DateTime_GetSec(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return static_cast<std::int16_t>(whole_seconds(self) % 60); });
}

std::int32_t FM_DateTime_GetDaysSinceEpoch(const fm::DateTime* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return saturated<std::int32_t>(checked(self).day); });
}

void FM_DateTime_GetSecsSinceMidnight(const fm::DateTime* self, fm::FixPt* result,
                                      fm::Status* status) {
    guarded(__func__, status, [&] { checked(result).value = checked(self).seconds; });
}

void FM_DateTime_GetSecondsSinceEpoch(const fm::DateTime* self, fm::FixPt* result,
                                      fm::Status* status) {
    guarded(__func__, status, [&] {
        checked(result).value = console::join_time_stamp(checked(self).day, self->seconds);
    });
}

void FM_DateTime_SetDate(fm::DateTime* self, const fm::DateTime* other, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).day = checked(other).day; });
}

void FM_DateTime_SetTime(fm::DateTime* self, const fm::DateTime* other, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).seconds = checked(other).seconds; });
}

void FM_DateTime_SetDaysSinceEpoch(fm::DateTime* self, std::int64_t days, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).day = days; });
}

void FM_DateTime_SetSecsSinceMidnight(fm::DateTime* self, const fm::FixPt* seconds,
                                      fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).seconds = checked(seconds).value; });
}

void FM_DateTime_SetSecondsSinceEpoch(fm::DateTime* self, const fm::FixPt* seconds,
                                      fm::Status* status) {
    guarded(__func__, status, [&] {
        const auto parts = console::split_time_stamp(checked(seconds).value);
        checked(self).day = parts.day;
        self->seconds = parts.seconds;
    });
}
