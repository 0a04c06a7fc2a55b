// Previews in raw photographs: those that are blocks of tags, and those in makers' own formats.
#pragma once

#include "src/formats/recognition.h"
#include "src/pictures/inside/found_pictures.h"

namespace vell::pictures {

// In all directories of a file that begins with a header of TIFF, and in makers' notes.
formats::Read<void> find_in_tiff(const formats::Window& block, FoundPictures& found);

// In a file of that format.
formats::Read<void> find_in_camera_file(formats::Format format, FoundPictures& found);

} // namespace vell::pictures
