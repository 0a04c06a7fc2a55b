// Decimal numbers with the host's rules: exact decimal digits, a wide exponent range, and division
// to a chosen number of digits.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

// A decimal number of up to `max_digits` significant digits. Results with more are rounded half
// away from zero. Zero has no sign.
class Decimal {
  public:
    static constexpr int max_digits = 400;
    static constexpr int default_precision = 16; // fraction digits of a division, at least

    Decimal() = default; // zero
    Decimal(std::int64_t value);
    static Decimal from_double(double value); // shortest text that reads back as the same double

    // Reads a plain number: optional sign, digits with at most one point, optional exponent
    // ("1e-3"). Nothing else may stand in the text. nullopt when the text is not a number.
    static std::optional<Decimal> parse(std::string_view text);

    // The host's reading of any text as a number: every character that is not a digit, the first
    // point, a leading minus or an exponent is skipped ("abc1.5x2" is 1.52, "" is 0).
    static Decimal from_any_text(std::u16string_view text);

    // The host's form: no exponent in the ordinary range, no zero before the point (".5", "-.5"),
    // no trailing zeros after it.
    std::string to_text() const;

    std::int64_t to_int64() const; // truncated towards zero, saturated at the ends of the range
    double to_double() const;
    bool is_zero() const;
    bool is_negative() const;

    Decimal operator-() const;
    friend Decimal operator+(const Decimal& a, const Decimal& b);
    friend Decimal operator-(const Decimal& a, const Decimal& b);
    friend Decimal operator*(const Decimal& a, const Decimal& b);
    // nullopt when `b` is zero.
    static std::optional<Decimal> divide(const Decimal& a, const Decimal& b,
                                         int precision = default_precision);
    static Decimal truncate(const Decimal& value); // towards zero

    friend std::strong_ordering operator<=>(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b);
};

} // namespace vell::console
