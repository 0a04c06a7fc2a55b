#include "src/pictures/geometry.h"

#include <algorithm>

namespace vell::pictures {

Area shown_area(Size picture, const ThumbnailShape& shape) {
    if (!shape.square)
        return {0, 0, picture};
    const std::uint32_t side = picture.shorter();
    return {(picture.width - side) / 2, (picture.height - side) / 2, {side, side}};
}

Size thumbnail_size(Size area, const ThumbnailShape& shape) {
    if (shape.square)
        return {shape.longer_side, shape.longer_side};
    const std::uint64_t longer = area.longer();
    if (longer <= shape.longer_side && !shape.may_enlarge)
        return area;
    const auto scaled = [&](std::uint64_t side) {
        const std::uint64_t rounded = (2 * side * shape.longer_side + longer) / (2 * longer);
        return static_cast<std::uint32_t>(std::max<std::uint64_t>(rounded, 1));
    };
    return {scaled(area.width), scaled(area.height)};
}

} // namespace vell::pictures
