// Canon's raw photographs that are ISO media: what the boxes of their own hold.
#pragma once

#include "src/formats/window.h"

#include <optional>
#include <vector>

namespace vell::formats::cr3 {

// The directories of the photograph's tags, which stand apart, each with a header of TIFF.
struct Tags {
    std::optional<Window> image;
    std::optional<Window> exif;
    std::optional<Window> gps;
};
// Absent in files of others.
Read<Tags> read_tags(const Window& file);

// The first directory of the photograph's tags, with a header of TIFF. Absent in files of others.
Read<Window> find_tags(const Window& file);

// Pictures for the screen: of the boxes "THMB" and "PRVW", and the sample of a track. Absent in
// files of others.
Read<std::vector<Window>> read_pictures(const Window& file);

} // namespace vell::formats::cr3
