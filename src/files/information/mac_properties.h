// What the Mac keeps about a file and Windows does not, and what is gone on both.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetFileType( switches ; filePath ): four characters, told by the extension of the name, as
// "TEXT" for "txt"; "fold" for a folder; empty for an extension that is not known. NotFound when
// nothing is there.
Result<void> get_file_type(params::Call& call, System& system);

// VlFile_GetFileCreator( switches ; filePath ): empty, since files on Windows have no creator.
// NotFound when nothing is there.
Result<void> get_file_creator(params::Call& call, System& system);

// VlFile_SetFinderComment( switches ; filePath ; commentText ), and step Set Finder Comment:
// NotAvailable for every path that is one.
Result<void> set_finder_comment(params::Call& call, System& system);

// VlFile_ReferenceToClip( switches ; filePath ; { pathToFMFile } ): NotAvailable. The function is
// obsolete; the name is kept so that old calculations stay readable.
Result<void> reference_to_clip(params::Call& call, System& system);

} // namespace vell::files
