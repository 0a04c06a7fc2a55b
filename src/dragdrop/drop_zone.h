// Where in a window files may be dropped.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace vell::dragdrop {

struct Point {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

// The right and the bottom border lie outside, as in every rectangle of Windows.
struct Rectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    bool contains(Point point) const {
        return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
    }
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

// "left top right bottom", the numbers separated by blanks; what follows the fourth (the host's own
// FieldBounds gives an angle there) is not read, and fractions are cut off. BadParameter for fewer
// numbers and for a rectangle without an area.
Result<Rectangle> parse_bounds(std::u16string_view text);

// The number at the start of a text, without its fraction; nullopt when there is none.
std::optional<std::int32_t> leading_number(std::u16string_view text);

// How much larger than the host's own units a window is shown, in quarters: 5 to 10, or 4 where the
// bounds stay as they are.
std::int32_t scale_in_quarters(std::int32_t outer_width, std::int32_t content_width);
Rectangle scaled(const Rectangle& bounds, std::int32_t quarters);

// The place of a handler in its window.
struct Zone {
    std::optional<Rectangle> bounds;  // in client coordinates; without them the whole window
    std::int32_t vertical_offset = 0; // added to a position in the window before it is looked up
    bool scrolls = false;             // the zone moves with the window's vertical scroll position

    bool contains(Point point, std::int32_t scroll_position) const;
    // The rectangle in the window that contains() tests for; nullopt for the whole window.
    std::optional<Rectangle> outline(std::int32_t scroll_position) const;
};

} // namespace vell::dragdrop
