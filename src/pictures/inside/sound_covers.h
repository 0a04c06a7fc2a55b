// Covers in files of sound: those of ID3 tags, wherever the format has room for one, of FLAC's own
// blocks and of comments in Ogg files.
#pragma once

#include "src/formats/recognition.h"
#include "src/pictures/inside/found_pictures.h"

namespace vell::pictures {

// The front cover comes first, icons last.
formats::Read<void> find_covers_of_sound(formats::Format format, FoundPictures& found);

} // namespace vell::pictures
