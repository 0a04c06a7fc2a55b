// Natural numbers of any length, kept in decimal limbs so that rounding to decimal digits and
// printing cost no conversion.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

class Natural {
  public:
    Natural() = default; // zero
    explicit Natural(std::uint64_t value);
    static Natural from_digits(std::string_view digits); // '0' to '9' only

    bool is_zero() const { return limbs_.empty(); }
    int digit_count() const; // 0 for zero
    int trailing_zeros() const;
    std::optional<std::uint64_t> to_uint64() const;
    std::string to_digits() const; // "0" for zero

    void scale_up(int digits);   // times 10^digits
    void scale_down(int digits); // divided by 10^digits, truncated
    // Divided by 10^digits, a half rounded up.
    void round_down(int digits);

    friend Natural operator+(const Natural& a, const Natural& b);
    friend Natural operator-(const Natural& a, const Natural& b); // a must not be less than b
    friend Natural operator*(const Natural& a, const Natural& b);
    // a / b with a half rounded up; b must not be zero.
    static Natural divide_rounded(const Natural& a, const Natural& b);

    friend std::strong_ordering operator<=>(const Natural& a, const Natural& b);
    friend bool operator==(const Natural& a, const Natural& b) = default;

  private:
    struct Division;
    static Division divide(const Natural& a, const Natural& b);

    void trim();
    std::uint32_t multiply_small(std::uint32_t factor, std::uint32_t carry);
    std::uint32_t divide_small(std::uint32_t divisor); // returns the remainder
    int digit_at(int position) const;                  // counted from the last digit, 0

    std::vector<std::uint32_t> limbs_; // base 10^9, lowest first, the highest never zero
};

} // namespace vell::console
