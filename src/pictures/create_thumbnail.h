// VlFile_CreateThumbnail: a small picture of a file.
#pragma once

#include "src/params/call.h"

namespace vell::pictures {

// VlFile_CreateThumbnail( switches ; filePath ; { thumbnailName } ), and the step "Create
// Thumbnail" with the size, whether it is square, and the type. The result is a container with a
// JPEG or PNG picture.
//
// -MaxSize=N: the longer side, 1 to 4096, 80 when not given. -SquareCrop: the middle of the
// picture, exactly as large as asked for. -AllowUpscaling: smaller pictures are made larger.
// -AsJPEG, -AsPNG: otherwise a picture with transparency becomes a PNG, any other a JPEG.
// -Quality=N: of a JPEG, 1 to 100, 85 when not given. -Background=RRGGBB: what a JPEG shows where
// the picture is transparent, white when not given. -Page=N: of a PDF file, or the picture of a
// file with several, from 1.
//
// NumberOutOfRange for a number outside its range, BadParameter for a page that is not there and
// for a colour that is none, NoPicture for a file that cannot be shown as a picture,
// PictureDamaged, PictureTooLarge, and for PDF files the codes of their text.
Result<void> create_thumbnail(params::Call& call, System& system);

} // namespace vell::pictures
