// Rationals from texts: fractions as they stand, and continued fractions for decimals.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vell::metadata {

struct Fraction {
    std::int64_t numerator; // carries the sign
    std::uint64_t denominator;
};

// A decimal number, with an exponent or without; a comma may stand in the place of the point.
std::optional<double> parse_decimal(std::string_view text);

// "a/b" as it stands; a decimal as the simplest fraction of its value, or the nearest that
// there is; "nan" as 0/0. Neither part is greater than `largest`.
// nullopt for anything else.
std::optional<Fraction> parse_fraction(std::string_view text, std::int64_t largest);

} // namespace vell::metadata
