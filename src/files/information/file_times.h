// Dates and times of files and folders, in local time by the rule in force on their date. Windows
// only.
#pragma once

#include "src/params/call.h"

#include <windows.h>

namespace vell::files {

// Local calendar times of points in time, and the other way round, in the time zone `zone`, or in
// the computer's own for null. Fractions of a second are cut off.
Result<params::CalendarTime> local_time(const FILETIME& time,
                                        const DYNAMIC_TIME_ZONE_INFORMATION* zone = nullptr);
// BadParameter for a time that does not exist in the calendar or that no file can have.
Result<FILETIME> file_time(const params::CalendarTime& local,
                           const DYNAMIC_TIME_ZONE_INFORMATION* zone = nullptr);

// VlFile_Get…( switches ; filePath ) for the date, the time of day and the timestamp of an item's
// creation, last change and last access.
Result<void> get_date_created(params::Call& call);
Result<void> get_date_modified(params::Call& call);
Result<void> get_date_accessed(params::Call& call);
Result<void> get_time_created(params::Call& call);
Result<void> get_time_modified(params::Call& call);
Result<void> get_time_accessed(params::Call& call);
Result<void> get_time_stamp_created(params::Call& call);
Result<void> get_time_stamp_modified(params::Call& call);
Result<void> get_time_stamp_accessed(params::Call& call);

// VlFile_SetTimestampCreated and VlFile_SetTimestampModified ( switches ; filePath ; timestamp ),
// and their steps: change that one time of a file or folder. A timestamp without a time part means
// midnight. BadParameter, and no change, for one that is empty, unreadable or that no file can
// have.
Result<void> set_time_stamp_created(params::Call& call);
Result<void> set_time_stamp_modified(params::Call& call);

} // namespace vell::files
