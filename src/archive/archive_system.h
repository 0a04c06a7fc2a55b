// What archives need of the system beside the file access layer.
#pragma once

#include "src/params/calendar_time.h"
#include "src/system/file_access.h"
#include "src/system/folder_reader.h"

#include <memory>

namespace vell::archive {

using files::NativePath;

class ArchiveSystem {
  public:
    virtual ~ArchiveSystem() = default;

    virtual files::FileSystem& files() = 0;
    virtual files::FolderSource& folders() = 0;

    // The path from its root on, names separated by "\".
    virtual Result<NativePath> full_path(const NativePath& path) = 0;
    // Others may have these files open at the same time, for reading and for writing.
    //
    // Opens for reading.
    virtual Result<std::unique_ptr<files::File>> open_shared(const NativePath& path) = 0;
    // Makes a file and opens it for writing, in one step. AlreadyExists when there is anything of
    // its name, a link without a target included.
    virtual Result<std::unique_ptr<files::File>> open_new(const NativePath& path) = 0;
    // Opens for writing a file that is new or emptied. Busy for a folder and a read-only file.
    virtual Result<std::unique_ptr<files::File>> open_emptied(const NativePath& path) = 0;
    // Makes one folder. AlreadyExists when there is anything of its name.
    virtual Result<void> create_folder(const NativePath& path) = 0;
    // Whether the item itself is a symbolic link, a junction or a mounted volume.
    virtual bool is_link(const NativePath& path) = 0;

    // Times are local ones, by the rule in force on their date.
    virtual params::CalendarTime now() = 0;
    virtual Result<params::CalendarTime> modification_time(const NativePath& path) = 0;
    // Modification and last access.
    virtual Result<void> set_times(const NativePath& path, const params::CalendarTime& local) = 0;
};

// The operating system.
ArchiveSystem& system_archives();

} // namespace vell::archive
