// What the headers of image files say of size, depth, resolution and number of images.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"

#include <cstdint>
#include <string_view>

namespace vell::metadata {

// Dots per inch.
struct Resolution {
    double horizontal;
    double vertical;
};

struct ImageHeader {
    static constexpr double default_resolution = 72; // dots per inch

    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t depth = 0; // bits of a pixel, those of all its channels
    double horizontal_resolution = default_resolution;
    double vertical_resolution = default_resolution;
    std::uint64_t image_count = 1;

    void set_resolution(const Resolution& resolution) {
        horizontal_resolution = resolution.horizontal;
        vertical_resolution = resolution.vertical;
    }
};

// Each reads a file whose first bytes are those of its format. EndOfFile when it ends in its
// header.

// The frame header (ITU-T T.81, B.2.2), with the resolution from the JFIF segment or from Exif.
// WrongImageKind without a frame, SegmentTooShort.
Result<ImageHeader> read_jpeg_header(files::BufferedReader& file);
// IHDR, pHYs, and acTL, which counts an animation's frames (PNG, third edition). WrongImageKind
// without IHDR.
Result<ImageHeader> read_png_header(files::BufferedReader& file);
// The logical screen descriptor (GIF89a, 18); images are counted up to the end of the file.
Result<ImageHeader> read_gif_header(files::BufferedReader& file);
// BITMAPINFOHEADER and those that begin like it, or BITMAPCOREHEADER. WrongImageKind for others.
Result<ImageHeader> read_bmp_header(files::BufferedReader& file);
// The first directory, or the one of full resolution where that describes a thumbnail (TIFF 6.0,
// section 8, NewSubfileType); each directory of its chain is an image. CorruptStructure for one
// without a size, or outside the file.
Result<ImageHeader> read_tiff_header(files::BufferedReader& file);

// The resolution in the first directory of a block of tags; the default where there is none.
Resolution resolution_of(std::string_view tags);

inline constexpr double centimetres_per_inch = 2.54;

// The default for a resolution of 0.
Resolution per_inch(double horizontal, double vertical, double units_per_inch);

} // namespace vell::metadata
