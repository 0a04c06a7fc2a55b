// Decimal numbers with the host's rules: exact decimal digits, a wide exponent range, and division
// to a chosen number of digits.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vell::console {

// A decimal number of up to `max_digits` significant digits. Results with more are rounded half
// away from zero. Zero has no sign. A magnitude of 10^(max_exponent + 1) or more becomes the
// greatest one there is, one below 10^-max_exponent becomes zero.
class Decimal {
  public:
    static constexpr int max_digits = 400;
    static constexpr int default_precision = 16; // fraction digits of a division, at least
    static constexpr int max_exponent = 9999;

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
    // no trailing zeros after it. Beyond 10^±400 an exponent follows ("1.5e-450").
    std::string to_text() const;

    std::int64_t to_int64() const; // truncated towards zero, saturated at the ends of the range
    double to_double() const;
    bool is_zero() const;
    bool is_negative() const;
    bool is_integer() const;

    Decimal operator-() const;
    friend Decimal operator+(const Decimal& a, const Decimal& b);
    friend Decimal operator-(const Decimal& a, const Decimal& b);
    friend Decimal operator*(const Decimal& a, const Decimal& b);
    // The quotient rounded to `precision` fraction digits; one that begins behind them keeps that
    // many significant digits instead of vanishing. nullopt when `b` is zero.
    static std::optional<Decimal> divide(const Decimal& a, const Decimal& b,
                                         int precision = default_precision);
    static Decimal truncate(const Decimal& value); // towards zero
    static Decimal floor(const Decimal& value);
    // Half away from zero; a negative count rounds to tens, hundreds and so on.
    static Decimal round(const Decimal& value, int fraction_digits);

    friend std::strong_ordering operator<=>(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b);

  private:
    struct Large; // a coefficient of any length
    struct Aligned;
    struct Collected;
    static Decimal small(std::int64_t coefficient, int exponent);
    static Decimal make(bool negative, Large coefficient, std::int64_t exponent);
    static Decimal from_digits(const Collected& collected);
    static Decimal add(const Decimal& a, const Decimal& b, bool negate_b);
    static Aligned align(const Decimal& a, const Decimal& b);
    static Decimal greatest(bool negative);

    bool is_small() const { return !large_; }
    Large magnitude() const;
    int top() const; // the power of ten of the first digit

    // The value is coefficient * 10^exponent_. The coefficient is small_ while its magnitude fits a
    // signed 64-bit number, otherwise *large_ with negative_. With a negative exponent the
    // coefficient does not end in a zero.
    std::int64_t small_ = 0;
    std::shared_ptr<const Large> large_;
    std::int32_t exponent_ = 0;
    bool negative_ = false; // of large_
};

} // namespace vell::console
