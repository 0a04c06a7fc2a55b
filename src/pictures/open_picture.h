// Finds the picture in a file, whatever kind of file it is.
#pragma once

#include "src/files/contents/buffered_reader.h"
#include "src/pictures/geometry.h"
#include "src/system/system.h"

#include <optional>
#include <string>
#include <vector>

namespace vell::pictures {

struct PictureSource {
    ByteSource& bytes;
    std::optional<files::NativePath> path; // of the file; the shell is asked with it
    ThumbnailShape shape;
    std::uint32_t page = 1;
};

// A thumbnail of what the file shows: its picture, a picture inside (raw photographs, covers of
// music and movies), a page, or what the shell has of it. Turned as its tags say. The codes are
// those of VlFile_CreateThumbnail; `notes` takes what is worth a line in the debug log.
Result<Picture> thumbnail_of(const PictureSource& source, System& system,
                             std::vector<std::string>& notes);

} // namespace vell::pictures
