// XMP in a file of its own beside a photograph that is not to be changed (XMP part 3, "External
// storage of metadata").
#pragma once

#include "src/metadata/writing/text_store.h"
#include "src/params/call.h"
#include "src/system/file_access.h"

#include <string_view>

namespace vell::metadata {

struct Sidecar {
    files::NativePath photograph; // is there, and nothing is read of it
    files::NativePath path;
};

// Whether the path's extension is that of a sidecar, whatever the case of its letters.
bool is_sidecar(const files::NativePath& path);

// Writes a sidecar with the packet of a text, which takes the place of one that is there once it is
// complete; an empty text removes that one. What fails leaves everything as it was.
//
// NothingFound when there is none to be removed, NotSupported for a text of another XMP segment.
Result<void> write_sidecar(params::Call& call, files::FileSystem& files, const Sidecar& sidecar,
                           std::string_view text, const TextStore& store);

} // namespace vell::metadata
