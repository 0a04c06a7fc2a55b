// What a path is, and what its name says.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_Exists( switches ; filePath ): 1 for a file or a folder, else 0. Never an error.
Result<void> exists(params::Call& call, System& system);

// VlFile_GetTypeOfItem( switches ; filePath ): "file", "folder", or "unknown" for a device. With
// "-AddAliasInfo" or "-AddIsAlias", " (alias)" follows for a shell link: a file whose name ends
// with ".lnk". NotFound when there is nothing, or nothing to be told about it.
Result<void> get_type_of_item(params::Call& call, System& system);

// VlFile_GetFileSize( switches ; filePath ), VlFile_GetDataSize( switches ; filePath ): the file's
// length in bytes, also while others have it open. Busy for a folder.
Result<void> get_file_size(params::Call& call, System& system);

// VlFile_GetResForkSize( switches ; filePath ): 0 for every path.
Result<void> get_resource_fork_size(params::Call& call, System& system);

// VlFile_GetFileName( switches ; filePath ), VlFile_GetExtension( switches ; filePath ): of the
// path as it is written; nothing has to exist there.
Result<void> get_file_name(params::Call& call, System& system);
Result<void> get_extension(params::Call& call, System& system);

} // namespace vell::files
