#include "src/metadata/writing/rational_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace vell::metadata {
namespace {

template <typename Number>
std::optional<Number> parse_whole(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::optional<Fraction> parse_quotient(std::string_view text, std::size_t slash,
                                       std::int64_t largest) {
    const auto numerator = parse_whole<std::int64_t>(text.substr(0, slash));
    const auto denominator = parse_whole<std::int64_t>(text.substr(slash + 1));
    if (!numerator || !denominator || *numerator > largest || *denominator > largest ||
        *numerator < -largest - 1 || *denominator < -largest - 1)
        return std::nullopt;
    // A sign belongs to the numerator; -2^31 below has none that would fit above.
    if (*denominator < 0)
        return -*numerator > largest || -*denominator > largest
                   ? std::nullopt
                   : std::optional(
                         Fraction{-*numerator, static_cast<std::uint64_t>(-*denominator)});
    return Fraction{*numerator, static_cast<std::uint64_t>(*denominator)};
}

// Convergents of the continued fraction come closer and closer; the first within the tolerance is
// the simplest. Where the next one would be too large, the best that is not lies between two.
Fraction approximate(double value, double tolerance, std::int64_t largest) {
    std::int64_t numerators[] = {0, 1}; // of the convergents before
    std::int64_t denominators[] = {1, 0};
    double rest = value;
    for (;;) {
        const double whole = std::floor(rest);
        const std::int64_t limit = std::min(
            (largest - numerators[0]) / std::max<std::int64_t>(numerators[1], 1),
            denominators[1] == 0 ? largest : (largest - denominators[0]) / denominators[1]);
        const bool is_too_large = whole > static_cast<double>(limit);
        const std::int64_t factor = is_too_large ? limit : static_cast<std::int64_t>(whole);
        const std::int64_t numerator = factor * numerators[1] + numerators[0];
        const std::int64_t denominator = factor * denominators[1] + denominators[0];
        const auto error = [&](std::int64_t top, std::int64_t bottom) {
            return bottom == 0
                       ? value
                       : std::abs(value - static_cast<double>(top) / static_cast<double>(bottom));
        };
        if (is_too_large && error(numerators[1], denominators[1]) < error(numerator, denominator))
            return {numerators[1], static_cast<std::uint64_t>(denominators[1])};
        if (is_too_large || rest <= whole || error(numerator, denominator) < tolerance)
            return {numerator, static_cast<std::uint64_t>(denominator)};
        numerators[0] = std::exchange(numerators[1], numerator);
        denominators[0] = std::exchange(denominators[1], denominator);
        rest = 1 / (rest - whole);
    }
}

} // namespace

std::optional<double> parse_decimal(std::string_view text) {
    std::string with_point(text);
    // A point beside a comma is a separator of thousands, or the comma is; nobody can tell.
    if (const std::size_t comma = text.find(',');
        comma != std::string_view::npos && text.find('.') == std::string_view::npos)
        with_point[comma] = '.';
    return parse_whole<double>(with_point);
}

std::optional<Fraction> parse_fraction(std::string_view text, std::int64_t largest) {
    if (text == "nan")
        return Fraction{0, 0};
    if (const std::size_t slash = text.find('/'); slash != std::string_view::npos)
        return parse_quotient(text, slash, largest);
    const auto value = parse_decimal(text);
    if (!value || !std::isfinite(*value))
        return std::nullopt;
    const double size = std::abs(*value);
    if (size > static_cast<double>(largest))
        return std::nullopt;
    if (size == 0)
        return Fraction{0, 1};
    // A double has nearly 16 digits; what differs by less is the same number.
    constexpr double precision = 1e-14;
    Fraction fraction = approximate(size, size * precision, largest);
    if (*value < 0)
        fraction.numerator = -fraction.numerator;
    return fraction;
}

} // namespace vell::metadata
