#include "src/dragdrop/drop_zone.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <array>
#include <limits>

namespace vell::dragdrop {
namespace {

constexpr std::size_t longest_bounds = 999; // characters that are read
constexpr std::int32_t unscaled = 4;        // quarters
constexpr std::int32_t largest_scale = 10;

std::int32_t within_32_bits(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(value, std::int64_t{Limits::min()}, std::int64_t{Limits::max()}));
}

bool is_blank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

// Takes the next number from the start of the text, and its fraction with it.
std::optional<std::int32_t> take_number(std::u16string_view& text) {
    std::size_t at = 0;
    while (at < text.size() && is_blank(text[at]))
        ++at;
    const bool negative = at < text.size() && text[at] == u'-';
    if (negative)
        ++at;
    const std::size_t first_digit = at;
    std::int64_t value = 0;
    for (; at < text.size() && is_digit(text[at]); ++at)
        value = within_32_bits(value * 10 + (text[at] - u'0'));
    const bool has_digits = at > first_digit;
    if (at < text.size() && (text[at] == u'.' || text[at] == u',')) {
        const std::size_t point = at++;
        while (at < text.size() && is_digit(text[at]))
            ++at;
        if (!has_digits && at == point + 1)
            return std::nullopt; // a point alone
    } else if (!has_digits) {
        return std::nullopt;
    }
    text.remove_prefix(at);
    return within_32_bits(negative ? -value : value);
}

} // namespace

std::optional<std::int32_t> leading_number(std::u16string_view text) {
    return take_number(text);
}

Result<Rectangle> parse_bounds(std::u16string_view text) {
    text = text.substr(0, longest_bounds);
    std::array<std::int32_t, 4> numbers{};
    for (std::int32_t& number : numbers) {
        const auto taken = take_number(text);
        const bool separated = text.empty() || is_blank(text.front());
        if (!taken || !separated)
            return Failure{ErrorCode::BadParameter};
        number = *taken;
    }
    const Rectangle bounds{numbers[0], numbers[1], numbers[2], numbers[3]};
    if (bounds.left >= bounds.right || bounds.top >= bounds.bottom)
        return Failure{ErrorCode::BadParameter};
    return bounds;
}

std::int32_t scale_in_quarters(std::int32_t outer_width, std::int32_t content_width) {
    if (outer_width <= 0 || content_width <= 0)
        return unscaled;
    const std::int64_t quarters = std::int64_t{outer_width} * 4 / content_width;
    return within_32_bits(
        std::clamp(quarters, std::int64_t{unscaled}, std::int64_t{largest_scale}));
}

Rectangle scaled(const Rectangle& bounds, std::int32_t quarters) {
    const auto scale = [quarters](std::int32_t value) {
        return within_32_bits(std::int64_t{value} * quarters / unscaled);
    };
    return {scale(bounds.left), scale(bounds.top), scale(bounds.right), scale(bounds.bottom)};
}

bool Zone::contains(Point point, std::int32_t scroll_position) const {
    const auto rectangle = outline(scroll_position);
    return !rectangle || rectangle->contains(point);
}

std::optional<Rectangle> Zone::outline(std::int32_t scroll_position) const {
    if (!bounds)
        return std::nullopt;
    // What is added to a position moves the rectangle the other way.
    const std::int64_t shift = std::int64_t{vertical_offset} + (scrolls ? scroll_position : 0);
    Rectangle rectangle = *bounds;
    rectangle.top = within_32_bits(rectangle.top - shift);
    rectangle.bottom = within_32_bits(rectangle.bottom - shift);
    return rectangle;
}

} // namespace vell::dragdrop
