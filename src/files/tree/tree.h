// Functions that make, delete, copy, move and exchange single files and make folders. Those that
// change whole folders stand in folder_operations.h.
//
// What names may be, item_names.h tells (BadName); an existing item is never replaced
// (AlreadyExists). A missing source is NotFound.
#pragma once

#include "src/params/call.h"
#include "src/system/system.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vell::files {

// New folders, each in the one before: removed again where they are empty, unless they are kept.
class NewFolders {
  public:
    explicit NewFolders(TreeSystem& tree) : tree_(tree) {}
    NewFolders(const NewFolders&) = delete;
    NewFolders& operator=(const NewFolders&) = delete;
    ~NewFolders();
    void add(std::u16string_view path);
    bool any() const { return !lengths_.empty(); }
    void keep() { lengths_.clear(); }

  private:
    TreeSystem& tree_;
    std::u16string deepest_;
    std::vector<std::size_t> lengths_; // of its part for each of them
};

// Makes a folder and every missing folder above it, which come to `made`. AlreadyExists when there
// is anything of its name. Once one that was missing above it has been made, the outcome for those
// below that one does not count. The calls of the system grow with the number of folders that are
// made, and with no more than the logarithm of the number of those that are not.
Result<void> make_folders(System& system, const NativePath& given, NewFolders& made);

// VlFile_CreateFile( switches ; filePath ): an empty file. "-CreateFolders", or the step's "Create
// folders", makes the missing folders above it, which go again when the file cannot be made.
Result<void> create_file(params::Call& call, System& system);

// VlFile_CreateFolder( switches ; folderPath ): a folder and every missing one above it.
Result<void> create_folder(params::Call& call, System& system);

// VlFile_DeleteFile( switches ; filePath ). Busy for a file that is read-only or in use.
Result<void> delete_file(params::Call& call, System& system);

// VlFile_CopyFile( switches ; sourceFilePath ; destinationFilePath )
Result<void> copy_file(params::Call& call, System& system);

// VlFile_MoveFile( switches ; sourceFilePath ; destinationFilePath ): to another folder, name or
// volume.
Result<void> move_file(params::Call& call, System& system);

// VlFile_ExchangeFiles( switches ; filePath1 ; filePath2 ): each file gets the other's path, by
// three renames. Files on different volumes need "-AllowDifferentVolumes", or the step's "Allow
// different volumes" (DifferentVolumes).
//
// When the second or third rename fails, things stay as they are at that moment: the second file is
// in its folder under a name with "_tmp", which the debug log tells.
Result<void> exchange_files(params::Call& call, System& system);

} // namespace vell::files
