// Functions that delete, copy and move whole folders. The root of a volume is none of these (Busy).
// What names may be, item_names.h tells (BadName).
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_DeleteFolder( switches ; folderPath ). BadName when there is none, FolderNotFound when the
// path is that of a file, Busy for a folder that is not empty.
//
// "-deleteAllSubFoldersAndAllContents", or the step's "Delete all subfolders", deletes it with all
// it holds, after the user has confirmed this (NotConfirmed) or with "noWarning" at once. Without a
// user nobody can confirm. Links in it are removed, what they lead to stays. The shell's paths are
// short: when anything in the folder has a longer one, nothing is deleted (PathTooLong).
Result<void> delete_folder(params::Call& call, System& system);

// VlFile_CopyFolder( switches ; sourceFolderPath ; destinationFolderPath ): NotAFolder when the
// source is none. By the shell's rule the copy gets the destination's name, or the source's name in
// the destination when that is a folder already; AlreadyExists when a file has that name. The code
// is the shell's own number, OperationAborted when the user ends it, Busy when anything of the
// source is missing in what the shell reports as done. A copy that would hold itself, also by way
// of a link, is refused before (125). What fails leaves no new folder that is empty.
Result<void> copy_folder(params::Call& call, System& system);

// VlFile_MoveFolder( switches ; sourceFolderPath ; destinationFolderPath ): NotAFolder when the
// source is none, MoveIntoItself for a destination that is the source or lies in it. A folder is
// not moved to another volume: Windows' number 17 (ERROR_NOT_SAME_DEVICE).
Result<void> move_folder(params::Call& call, System& system);

} // namespace vell::files
