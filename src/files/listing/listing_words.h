// The words of the switches that say what a listing or a search gives.
#pragma once

#include "src/files/listing/folder_lister.h"
#include "src/params/switches.h"

namespace vell::files {

// "files" and "folders", each where it is said; "showpointdirs", "showinvisibles", "showaliases" or
// "showshortcuts", "shortnames", "-recursive", "-AddFolderSuffix" ("/").
ListingOptions listing_words(const params::SwitchSet& switches);

} // namespace vell::files
