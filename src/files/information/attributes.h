// Attributes of files and folders.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetFileAttribute( switches ; filePath ): 1 or 0 for the one attribute that the switches
// name; BadParameter unless they name exactly one.
//
// "-lockAttr", "-archiveAttr" and "-hiddenAttr" look at the item; "-IsFree" tells whether nobody
// has the file or folder open (NotFound when there is none, Busy when it may not be opened). What
// this platform lacks has a fixed answer, without a look at the item: "-labelNumAttr" and
// "-PackageFolderAttr" are 0, "-findercommentAttr" is empty, "-iCloudStatus" is NotAvailable.
Result<void> get_file_attribute(params::Call& call, System& system);

// VlFile_SetFileAttribute( switches ; filePath ; cftype ; comment ), and step Set File Attributes:
// "-lock" or "-unlock", "-hide" or "-unhide", "-SetArchive" or "-ResetArchive", in any combination;
// BadParameter for both of a pair. The item is written to only when something changes. Other
// switches and the further parameters have no meaning on this platform.
Result<void> set_file_attribute(params::Call& call, System& system);

// VlFile_IsFree( switches ; filePath ): 1 when the file or folder can be opened for changing:
// nobody has it open, it is not read-only, and the user may change it; else 0. NotFound when there
// is none.
Result<void> is_free(params::Call& call, System& system);

} // namespace vell::files
