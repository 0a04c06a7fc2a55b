// The folders that Windows and its users have for a purpose.
#pragma once

#include "src/params/call.h"
#include "src/system/places.h"

#include <span>
#include <string>
#include <string_view>

namespace vell::files {

struct SpecialFolderWord {
    std::string_view word;
    SpecialFolder folder;
};
// Several words may mean one folder.
std::span<const SpecialFolderWord> special_folder_words();

// VlFile_FindFolder( folderswitch ): the path, with "\" at its end, of the folder whose word is one
// of the names in the switch, such as "-DesktopFolder"; of several that of the longest one.
// "-CreateFolder" makes a folder of the user's that is not there yet. BadParameter without a word.
Result<void> find_folder(params::Call& call, System& system);

} // namespace vell::files
