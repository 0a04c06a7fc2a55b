// Writes metadata into JPEG files.
#pragma once

#include "src/files/file_access.h"
#include "src/params/call.h"

namespace vell::metadata {

// VlFile_SetMetaData and "Set MetaData of Image File". The metadata that the switches, or the
// step's action, name are made from the text that is given and replace those of the source in a
// copy, or in its own place. Before anything is made, the source has been walked and the new
// segment is known to fit.
Result<void> set_metadata(params::Call& call, files::FileSystem& files);
inline Result<void> set_metadata(params::Call& call) {
    return set_metadata(call, files::system_files());
}

// VlFile_SetMovieMetaData and "Set MetaData of Movie": movie files are not written on Windows.
// NotSupported; BadParameter without a switch that names what to write.
Result<void> set_movie_metadata(params::Call& call);

} // namespace vell::metadata
