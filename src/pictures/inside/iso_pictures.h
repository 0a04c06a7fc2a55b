// Pictures in ISO media: JPEG items of HEIF images, covers of movies and music, previews in raw
// photographs of Canon.
#pragma once

#include "src/pictures/inside/found_pictures.h"

namespace vell::pictures {

formats::Read<void> find_in_iso_media(FoundPictures& found);

} // namespace vell::pictures
