// Previews in the notes that cameras' makers add to Exif.
#pragma once

#include "src/pictures/inside/found_pictures.h"
#include "src/pictures/inside/tag_directory.h"

namespace vell::pictures {

// In the note of that Exif directory, for the makers whose notes are known: Nikon, Olympus,
// Minolta.
formats::Read<void> find_in_maker_note(const TagDirectory& exif, std::optional<Orientation> of_file,
                                       FoundPictures& found);

} // namespace vell::pictures
