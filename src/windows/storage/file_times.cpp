#include "src/windows/storage/file_times.h"
#include "src/windows/handle.h"

#include <chrono>
#include <iterator>

namespace vell::windows {

namespace {

using params::CalendarTime;

Result<TIME_ZONE_INFORMATION> read_rules(WORD year, const DYNAMIC_TIME_ZONE_INFORMATION* zone) {
    TIME_ZONE_INFORMATION rules;
    auto* const not_written_to = const_cast<DYNAMIC_TIME_ZONE_INFORMATION*>(zone);
    if (!GetTimeZoneInformationForYear(year, not_written_to, &rules))
        return Failure{last_error()};
    return rules;
}

// The rules of the year in which a time lies; they differ from year to year in some zones. Those of
// the computer's own zone are kept for a second, in which they serve thousands of files: the system
// reads the registry for them, and the user may choose another zone meanwhile.
Result<TIME_ZONE_INFORMATION> rules_of(WORD year, const DYNAMIC_TIME_ZONE_INFORMATION* zone) {
    constexpr ULONGLONG kept_ms = 1'000;
    struct Kept {
        TIME_ZONE_INFORMATION rules;
        ULONGLONG read_at;
        WORD year; // 0: none
    };
    thread_local Kept kept_years[8];
    if (zone)
        return read_rules(year, zone);
    const ULONGLONG now = GetTickCount64();
    Kept& kept = kept_years[year % std::size(kept_years)];
    if (kept.year != year || now - kept.read_at >= kept_ms) {
        const TIME_ZONE_INFORMATION rules = VELL_TRY(read_rules(year, nullptr));
        kept = {rules, now, year};
    }
    return kept.rules;
}

} // namespace

files::FileTime file_time_of(const FILETIME& time) {
    return files::FileTime{std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime};
}

Result<CalendarTime> local_time(const FILETIME& time, const DYNAMIC_TIME_ZONE_INFORMATION* zone) {
    SYSTEMTIME utc;
    if (!FileTimeToSystemTime(&time, &utc))
        return Failure{last_error()};
    SYSTEMTIME local;
    TIME_ZONE_INFORMATION rules = VELL_TRY(rules_of(utc.wYear, zone));
    if (!SystemTimeToTzSpecificLocalTime(&rules, &utc, &local))
        return Failure{last_error()};
    if (local.wYear != utc.wYear) { // around New Year
        rules = VELL_TRY(rules_of(local.wYear, zone));
        if (!SystemTimeToTzSpecificLocalTime(&rules, &utc, &local))
            return Failure{last_error()};
    }
    return CalendarTime{local.wYear, local.wMonth,  local.wDay,
                        local.wHour, local.wMinute, local.wSecond};
}

Result<FILETIME> file_time(const CalendarTime& local, const DYNAMIC_TIME_ZONE_INFORMATION* zone) {
    constexpr Failure bad_parameter{ErrorCode::BadParameter};
    constexpr std::int32_t first_year = 1601;
    constexpr std::int32_t last_year = 30827;
    const auto is_date = [](const CalendarTime& time) {
        using namespace std::chrono;
        return year_month_day(year(time.year), month(static_cast<unsigned>(time.month)),
                              day(static_cast<unsigned>(time.day)))
            .ok();
    };
    if (local.year < first_year || local.year > last_year || !is_date(local))
        return bad_parameter;
    const SYSTEMTIME calendar{.wYear = static_cast<WORD>(local.year),
                              .wMonth = static_cast<WORD>(local.month),
                              .wDayOfWeek = 0,
                              .wDay = static_cast<WORD>(local.day),
                              .wHour = static_cast<WORD>(local.hour),
                              .wMinute = static_cast<WORD>(local.minute),
                              .wSecond = static_cast<WORD>(local.second),
                              .wMilliseconds = 0};
    FILETIME time;
    if (!SystemTimeToFileTime(&calendar, &time)) // checks the time of day
        return bad_parameter;
    const TIME_ZONE_INFORMATION rules = VELL_TRY(rules_of(calendar.wYear, zone));
    SYSTEMTIME utc;
    if (!TzSpecificLocalTimeToSystemTime(&rules, &calendar, &utc) ||
        !SystemTimeToFileTime(&utc, &time))
        return bad_parameter;
    // 0 would leave the file's time as it is.
    const bool is_zero = time.dwLowDateTime == 0 && time.dwHighDateTime == 0;
    const bool is_negative = time.dwHighDateTime > 0x7FFF'FFFF;
    if (is_zero || is_negative)
        return bad_parameter;
    return time;
}

Result<FileTimes> file_times(const files::NewTimes& times) {
    FileTimes converted;
    if (times.created)
        converted.created = VELL_TRY(file_time(*times.created));
    if (times.accessed)
        converted.accessed = VELL_TRY(file_time(*times.accessed));
    if (times.modified) // often the same, and the rules of its year are not asked for again
        converted.modified = times.modified == times.accessed
                                 ? converted.accessed
                                 : VELL_TRY(file_time(*times.modified));
    return converted;
}

Result<void> set_file_times(HANDLE item, const FileTimes& times) {
    const auto given = [](const std::optional<FILETIME>& time) {
        return time ? &*time : nullptr;
    };
    if (!SetFileTime(item, given(times.created), given(times.accessed), given(times.modified)))
        return Failure{last_error()};
    return {};
}

} // namespace vell::windows
