// Icon and cursor files: pictures of one thing in several sizes.
#pragma once

#include "src/system/pictures.h"

#include <cstdint>
#include <vector>

namespace vell::pictures {

// One of the pictures. Its size and depth are those that it tells of itself.
struct IconImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0; // bits of a pixel
    std::uint64_t offset = 0;
    std::uint64_t size = 0; // in bytes
    bool is_png = false;    // otherwise a bitmap with a mask
};

// Those that lie in the file, in its order; NotSupported for another kind of file.
Result<std::vector<IconImage>> read_icon_directory(ByteSource& bytes);

// The pictures, the best one first: the smallest one that is not smaller than wanted, or else the
// largest; the deepest of the same size. A size of 0 wants the largest.
std::vector<IconImage> by_fitness(std::vector<IconImage> images, std::uint32_t size);

// A picture that is no PNG. Its alpha counts where it has some, otherwise its mask, which may be
// missing at the end. PictureTooLarge beyond 16 million pixels.
Result<Picture> read_icon_bitmap(ByteSource& bytes, const IconImage& image);

// The picture reduced or enlarged, its longer side being `size`.
Picture fitted(const Picture& picture, std::uint32_t size);
// A square picture of that size with the fitted one in its middle.
Picture fitted_to_square(const Picture& picture, std::uint32_t size);

} // namespace vell::pictures
