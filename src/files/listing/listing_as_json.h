// What a folder holds as JSON.
#pragma once

#include "src/files/listing/folder_lister.h"
#include "src/params/switches.h"
#include "src/system/system.h"

#include <string>

namespace vell::files {

// An array with an object for each item that the options keep, in the order of the lines of a
// listing: "Name", "Path" (the full one, in the host's form with "-FileMakerPathFormat"), "Type"
// ("file" or "folder"), "Link" (true for what leads elsewhere), "Size" (bytes, of files),
// "Created", "Modified" and "Accessed" (local time as in ISO 8601; missing where the file system
// keeps none), "Hidden", "ReadOnly".
//
// The codes of FolderLister.
Result<std::u16string> listing_as_json(System& system, const params::SwitchSet& switches,
                                       const std::u16string& folder, ListingOptions options);

} // namespace vell::files
