// Thumbnails of pictures that decoders give row by row.
#pragma once

#include "src/pictures/geometry.h"
#include "src/pictures/inside/orientation.h"
#include "src/system/pictures.h"

namespace vell::pictures {

// The scaled picture in sRGB. What its rows fail to give stays transparent, or white where there is
// no alpha; the failure counts when not even the first row is there.
Result<Picture> make_thumbnail(PictureRows& rows, const ThumbnailShape& shape);

// The same of a picture in memory.
Result<Picture> make_thumbnail(const Picture& picture, const ThumbnailShape& shape);

// The picture as it is to be shown.
Picture turned(Picture picture, Orientation orientation);

// Drops alpha where nothing shows through.
void drop_opaque_alpha(Picture& picture);

} // namespace vell::pictures
