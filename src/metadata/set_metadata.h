// Writes metadata into JPEG, PNG, WebP and TIFF files, and beside photographs.
#pragma once

#include "src/params/call.h"

namespace vell::metadata {

// VlFile_SetMetaData and "Set MetaData of Image File". The metadata that the switches, or the
// step's action, name are made from the text that is given and replace those of the source in a
// copy, or in its own place; a destination that ends in ".xmp" gets a packet alone. Before anything
// is made, the source has been walked and the new block is known to fit.
//
// What becomes of metadata that the text does not name differs:
//   -SetExif         merges: tags without a section stay, an empty section removes its tag. The
//                    maker note goes unless -AddExifMakerNote is given
//   -SetIPTC         replaces: the text is all of the IPTC data, and whoever gives a caption alone
//                    loses keywords and copyright. With -KeepOtherDatasets it merges: sections
//                    replace all datasets of their number, an empty one removes them
//   -SetXMP, -SetImageURL, JPEGComment  replace; an empty text removes
//
// NothingFound when the text only removes and there is nothing of that; BadParameter for a text
// that is no tagged text, a value that its tag cannot hold (a date in another form than Exif's,
// too) and IPTC that stays and would no longer be readable; ResourceTooLarge for what does not fit
// or could not be read back; NotAJpeg for a format that is not written, NotSupported for what the
// format has no place for. docs/decisions/metadata-writing.md tells encodings and places.
Result<void> set_metadata(params::Call& call, System& system);

// VlFile_SetMovieMetaData and "Set MetaData of Movie": movie files are not written on Windows.
// NotSupported; BadParameter without a switch that names what to write.
Result<void> set_movie_metadata(params::Call& call, System& system);

} // namespace vell::metadata
