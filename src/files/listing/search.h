// Finding files and folders by their names.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <string>

namespace vell::files {

// VlFile_Search( switches ; folderPath ; searchName ): the full paths of the items, at any depth
// below the folder, whose names have the text in them, or are it with "exactname"; one a line, in
// the order of a recursive listing. "*" and "?" stand for other characters (name_pattern.h), letter
// case does not count. The words are those of VlFile_ListFolder; files and folders are both looked
// for without "-files" and "-folders". "-MaxResults=" ends the search with so many results,
// "-TimeoutSecs=" with TimeLimitPassed.
//
// Folders below the first that cannot be read are left out, which the debug log tells. BadParameter
// without a name, BadName for one that no item can have. NotAFolder, FolderNotFound as a listing.
// The folder may be a volume: "C:\", "C:" or "C".
Result<void> search(params::Call& call, System& system);

} // namespace vell::files
