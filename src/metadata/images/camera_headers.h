// What raw photographs say of their size that are no TIFF files, or have tags of their own for it.
#pragma once

#include "src/base/result.h"
#include "src/formats/window.h"
#include "src/metadata/images/image_header.h"

namespace vell::metadata {

// Each gives the photograph as it is stored, and is NotSupported where its size cannot be read.
// Where files do not say how many bits a pixel of the photograph has, it has 24.

// Fujifilm: without the borders of the sensor.
Result<ImageHeader> read_raf_header(formats::Window file);
// Canon: the records, and the tags in boxes.
Result<ImageHeader> read_ciff_header(formats::Window file);
Result<ImageHeader> read_cr3_header(formats::Window file);
// Minolta, Sigma.
Result<ImageHeader> read_mrw_header(formats::Window file);
Result<ImageHeader> read_x3f_header(formats::Window file);
// Files that begin like TIFF and have another number: those of Panasonic, without the borders of
// the sensor; BigTIFF, and those of Olympus and others, by the tags of TIFF.
Result<ImageHeader> read_tiff_like_header(formats::Window file);

} // namespace vell::metadata
