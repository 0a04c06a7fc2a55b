// Finding files and folders by their names.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"
#include "src/system/folder_reader.h"

#include <cstdint>
#include <string>

namespace vell::files {

// What a search needs of the system, beside its files and folders.
class SearchSystem {
  public:
    virtual ~SearchSystem() = default;

    // The path from its root on, names separated by "\".
    virtual Result<NativePath> full_path(const NativePath& path) = 0;
    // Makes names that differ in letter case only equal, by the file system's own rule.
    virtual void fold_case(std::u16string& name) = 0;
    // A clock that never goes back.
    virtual std::uint64_t milliseconds() = 0;
};

SearchSystem& system_search();

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
Result<void> search(params::Call& call, FileSystem& files, FolderSource& folders,
                    SearchSystem& system);
inline Result<void> search(params::Call& call) {
    return search(call, system_files(), system_folders(), system_search());
}

} // namespace vell::files
