// Functions that tell what is in a folder.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ListFolder( switches ; folderPath ): the names of the folder's items, one a line. The
// words "files" and "folders" say which, at least one of them (BadParameter). Further switches:
// "showpointdirs", "showinvisibles", "showaliases" or "showshortcuts", "shortnames", "-recursive",
// "-AddFolderSuffix" ("/" behind folders) and "-ReturnAtEnd" (a line end behind the last line too).
// With "-Format=JSON" the result is an array of objects (listing_as_json.h).
// "-showpackagecontents" and "-dontencodeslash" are accepted: there are no packages here, and names
// hold no slash that would be encoded.
//
// NotAFolder when a file stands there, FolderNotFound when nothing does.
Result<void> list_folder(params::Call& call, System& system);

// VlFile_GetFolderSize( switches ; folderPath ): the bytes of all the files in the folder and
// below. Codes as above; a folder below that cannot be read gives its own.
Result<void> get_folder_size(params::Call& call, System& system);

} // namespace vell::files
