// Dates and times of files and folders, in local time by the rule in force on their date.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_Get…( switches ; filePath ) for the date, the time of day and the timestamp of an item's
// creation, last change and last access.
Result<void> get_date_created(params::Call& call, System& system);
Result<void> get_date_modified(params::Call& call, System& system);
Result<void> get_date_accessed(params::Call& call, System& system);
Result<void> get_time_created(params::Call& call, System& system);
Result<void> get_time_modified(params::Call& call, System& system);
Result<void> get_time_accessed(params::Call& call, System& system);
Result<void> get_time_stamp_created(params::Call& call, System& system);
Result<void> get_time_stamp_modified(params::Call& call, System& system);
Result<void> get_time_stamp_accessed(params::Call& call, System& system);

// VlFile_SetTimestampCreated and VlFile_SetTimestampModified ( switches ; filePath ; timestamp ),
// and their steps: change that one time of a file or folder. A timestamp without a time part means
// midnight. BadParameter, and no change, for one that is empty, unreadable or that no file can
// have.
Result<void> set_time_stamp_created(params::Call& call, System& system);
Result<void> set_time_stamp_modified(params::Call& call, System& system);

} // namespace vell::files
