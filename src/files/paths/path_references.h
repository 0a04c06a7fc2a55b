// The host's references to files, as a container or a dialog of the host gives them.
#pragma once

#include "src/params/call.h"

#include <functional>
#include <string>

namespace vell::files {

// A path from its root, with "\" and without "." and "..".
using FullPath = std::function<Result<std::u16string>(const std::u16string&)>;

// The full path that a reference names: "filewin:/C:/a", "file:", "imagewin:", "image:",
// "moviewin:", "movie:", "smb://server/share/a", each also with "//server/share", and a path as it
// is. A reference of several lines, such as that of a container, names one file: lines with a size,
// with a path for the Mac and with a path from the solution's folder are passed over.
//
// BadParameter without a path, SeveralLines for more than one, NotAvailable for a path of the Mac
// alone, ErrorAsPath, BadName.
Result<std::u16string> path_of_reference(std::u16string_view reference, const FullPath& full_path);

// VlFile_FileSpecToFullPath( switches ; FileSpec ): the full path, "-FileMakerPathFormat" or
// native. Nothing has to exist there.
Result<void> file_spec_to_full_path(params::Call& call, System& system);

// VlFile_FullPathToFileSpec( switches ; filePath ): the full path in the host's form.
Result<void> full_path_to_file_spec(params::Call& call, System& system);

} // namespace vell::files
