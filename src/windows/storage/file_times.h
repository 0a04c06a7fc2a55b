// Times of files and of the calendar. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/params/calendar_time.h"
#include "src/system/item_properties.h"

#include <windows.h>

namespace vell::windows {

files::FileTime file_time_of(const FILETIME& time);

// Local calendar times of points in time, and the other way round, in the time zone `zone`, or in
// the computer's own for null. Fractions of a second are cut off.
Result<params::CalendarTime> local_time(const FILETIME& time,
                                        const DYNAMIC_TIME_ZONE_INFORMATION* zone = nullptr);
// BadParameter for a time that does not exist in the calendar or that no file can have.
Result<FILETIME> file_time(const params::CalendarTime& local,
                           const DYNAMIC_TIME_ZONE_INFORMATION* zone = nullptr);

// Times as SetFileTime takes them, which leaves those alone that are not given.
struct FileTimes {
    std::optional<FILETIME> created;
    std::optional<FILETIME> accessed;
    std::optional<FILETIME> modified;
};
Result<FileTimes> file_times(const files::NewTimes& times);
Result<void> set_file_times(HANDLE item, const FileTimes& times);

} // namespace vell::windows
