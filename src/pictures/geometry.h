// Which part of a picture becomes a thumbnail, and how large.
#pragma once

#include <cstdint>

namespace vell::pictures {

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    constexpr std::uint32_t longer() const { return width > height ? width : height; }
    constexpr std::uint32_t shorter() const { return width > height ? height : width; }

    friend constexpr bool operator==(const Size&, const Size&) = default;
};

struct Area {
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    Size size;
};

struct ThumbnailShape {
    std::uint32_t longer_side = 80;
    bool square = false; // the middle, exactly as large as asked for
    bool may_enlarge = false;
};

// Whether a picture of that size need not be enlarged.
constexpr bool is_enough(Size picture, const ThumbnailShape& shape) {
    return (shape.square ? picture.shorter() : picture.longer()) >= shape.longer_side;
}

// The middle of a picture for a square thumbnail, otherwise all of it.
Area shown_area(Size picture, const ThumbnailShape& shape);

// The size of the thumbnail of that area: the longer side as asked for, the other in proportion and
// never 0. What is smaller keeps its size, unless it is square or may be enlarged.
Size thumbnail_size(Size area, const ThumbnailShape& shape);

} // namespace vell::pictures
