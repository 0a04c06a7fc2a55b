#include "src/files/information/file_times.h"
#include "src/windows/handle.h"
#include "src/windows/path.h"

#include <chrono>

namespace vell::files {
namespace {

using params::CalendarTime;
using params::Call;
using params::NativePath;

struct ItemTimes {
    FILETIME created;
    FILETIME accessed;
    FILETIME modified;
};

using TimeOfItem = FILETIME ItemTimes::*;

Result<UniqueFile> open_for_times(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Failure{last_error()};
    const bool is_folder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    // A file is not read, and so found whoever has it open.
    UniqueFile item(CreateFileW(
        path.c_str(), is_folder ? GENERIC_READ : 0, is_folder ? FILE_SHARE_READ : 0, nullptr,
        OPEN_EXISTING, is_folder ? FILE_FLAG_BACKUP_SEMANTICS : FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!item)
        return Failure{last_error()};
    return item;
}

Result<CalendarTime> local_time_of(Call& call, TimeOfItem which) {
    const NativePath path = VELL_TRY(call.path(1));
    const UniqueFile item = VELL_TRY(open_for_times(win32_path(path)));
    ItemTimes times{};
    if (!GetFileTime(item.get(), &times.created, &times.accessed, &times.modified))
        return Failure{last_error()};
    return local_time(times.*which);
}

Result<void> get_date(Call& call, TimeOfItem which) {
    call.set_date(VELL_TRY(local_time_of(call, which)));
    return {};
}

Result<void> get_time(Call& call, TimeOfItem which) {
    call.set_time(VELL_TRY(local_time_of(call, which)));
    return {};
}

Result<void> get_time_stamp(Call& call, TimeOfItem which) {
    call.set_time_stamp(VELL_TRY(local_time_of(call, which)));
    return {};
}

Result<void> set_time_stamp(Call& call, TimeOfItem which) {
    const NativePath path = VELL_TRY(call.path(1));
    const auto stamp = call.time_stamp(2);
    if (!stamp)
        return Failure{ErrorCode::BadParameter};
    const FILETIME time = VELL_TRY(file_time(*stamp));

    // Folders need the backup flag; others may have the item open meanwhile.
    constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueFile item(CreateFileW(win32_path(path).c_str(), FILE_WRITE_ATTRIBUTES, share_all,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!item)
        return Failure{last_error()};
    const bool creation = which == &ItemTimes::created;
    if (!SetFileTime(item.get(), creation ? &time : nullptr, nullptr, creation ? nullptr : &time))
        return Failure{last_error()};
    call.set_done();
    return {};
}

// The rules of the year in which a time lies; they differ from year to year in some zones.
Result<TIME_ZONE_INFORMATION> rules_of(WORD year, const DYNAMIC_TIME_ZONE_INFORMATION* zone) {
    TIME_ZONE_INFORMATION rules;
    auto* const not_written_to = const_cast<DYNAMIC_TIME_ZONE_INFORMATION*>(zone);
    if (!GetTimeZoneInformationForYear(year, not_written_to, &rules))
        return Failure{last_error()};
    return rules;
}

} // namespace

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

Result<void> get_date_created(Call& call) {
    return get_date(call, &ItemTimes::created);
}
Result<void> get_date_modified(Call& call) {
    return get_date(call, &ItemTimes::modified);
}
Result<void> get_date_accessed(Call& call) {
    return get_date(call, &ItemTimes::accessed);
}
Result<void> get_time_created(Call& call) {
    return get_time(call, &ItemTimes::created);
}
Result<void> get_time_modified(Call& call) {
    return get_time(call, &ItemTimes::modified);
}
Result<void> get_time_accessed(Call& call) {
    return get_time(call, &ItemTimes::accessed);
}
Result<void> get_time_stamp_created(Call& call) {
    return get_time_stamp(call, &ItemTimes::created);
}
Result<void> get_time_stamp_modified(Call& call) {
    return get_time_stamp(call, &ItemTimes::modified);
}
Result<void> get_time_stamp_accessed(Call& call) {
    return get_time_stamp(call, &ItemTimes::accessed);
}
Result<void> set_time_stamp_created(Call& call) {
    return set_time_stamp(call, &ItemTimes::created);
}
Result<void> set_time_stamp_modified(Call& call) {
    return set_time_stamp(call, &ItemTimes::modified);
}

} // namespace vell::files
