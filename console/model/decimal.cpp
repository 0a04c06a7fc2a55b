#include "console/model/decimal.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace vell::console {

namespace {

constexpr std::int64_t int64_max = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t int64_min = std::numeric_limits<std::int64_t>::min();
constexpr int plain_exponent = 400; // beyond it a number is written with an exponent
constexpr int max_power = 18;       // of ten, in a signed 64-bit number

constexpr std::int64_t power_of_ten(int power) {
    std::int64_t value = 1;
    while (power-- > 0)
        value *= 10;
    return value;
}

constexpr auto powers_of_ten = [] {
    std::array<std::int64_t, max_power + 1> powers{};
    for (int power = 0; power <= max_power; ++power)
        powers[static_cast<std::size_t>(power)] = power_of_ten(power);
    return powers;
}();

std::int64_t power(int exponent) {
    return powers_of_ten[static_cast<std::size_t>(exponent)];
}

std::uint64_t absolute(std::int64_t value) {
    return value < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(value)
                     : static_cast<std::uint64_t>(value);
}

// coefficient * 10^power, when it fits.
std::optional<std::int64_t> scaled(std::int64_t coefficient, int by) {
    std::int64_t result = 0;
    if (by > max_power || __builtin_mul_overflow(coefficient, power(by), &result))
        return std::nullopt;
    return result;
}

} // namespace

struct Decimal::Large {
    using Integer =
        boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                      boost::multiprecision::et_off>; // sums are numbers

    Integer value;

    static Integer power_of_ten(int power) {
        return boost::multiprecision::pow(Integer(10), static_cast<unsigned>(power));
    }
    static Large from_digits(const std::string& digits) { // without zeros before them
        return {digits.empty() ? Integer() : Integer(digits)};
    }
    bool is_zero() const { return value.is_zero(); }

    int digit_count() const { // 0 for zero
        if (is_zero())
            return 0;
        int digits = static_cast<int>(msb(value) * 30102 / 100000); // log10(2), a little less
        for (Integer limit = power_of_ten(digits); value >= limit; limit *= 10)
            ++digits;
        return digits;
    }
    // Divided by ten as often as nothing is lost, at most so many times; the number of times.
    int drop_zeros(std::int64_t most) {
        int dropped = 0;
        Integer quotient;
        Integer remainder;
        for (; dropped < most && !is_zero(); ++dropped) {
            divide_qr(value, Integer(10), quotient, remainder);
            if (!remainder.is_zero())
                break;
            value.swap(quotient);
        }
        return dropped;
    }
    void scale_up(int digits) { // times 10^digits
        if (digits > 0)
            value *= power_of_ten(digits);
    }
    void scale_down(int digits) { // divided by 10^digits, truncated
        if (digits > 0)
            value /= power_of_ten(digits);
    }
    // a / b with a half rounded up; b is not zero.
    static Large divide_rounded(const Integer& a, const Integer& b) {
        Integer quotient;
        Integer remainder;
        divide_qr(a, b, quotient, remainder);
        if (remainder + remainder >= b)
            ++quotient;
        return {std::move(quotient)};
    }
    void round_down(int digits) { // divided by 10^digits, a half rounded up
        if (digits > digit_count())
            value = 0;
        else if (digits > 0)
            value = divide_rounded(value, power_of_ten(digits)).value;
    }
};

// Two magnitudes brought to one exponent.
struct Decimal::Aligned {
    Large a;
    Large b;
    int exponent;
};

// The digits of a text. Those that no result can show are dropped as they come, so that a text of
// any length costs bounded memory; one digit more than fits is kept for rounding.
struct Decimal::Collected {
    std::string digits;
    std::int64_t exponent = 0;      // of the last digit kept
    std::int64_t text_exponent = 0; // written behind an "e"
    bool negative = false;
    bool point = false;
    bool any = false; // any digit at all, zeros included

    void push(char digit) {
        any = true;
        if (digits.empty() && digit == '0') {
            exponent -= point ? 1 : 0;
        } else if (digits.size() <= max_digits) {
            digits.push_back(digit);
            exponent -= point ? 1 : 0;
        } else {
            exponent += point ? 0 : 1;
        }
    }
    void push_exponent(char digit) {
        text_exponent = std::min<std::int64_t>(text_exponent * 10 + (digit - '0'), 1'000'000'000);
    }
};

Decimal::Decimal(std::int64_t value) : small_(value) {
    if (value == int64_min) {
        small_ = 0;
        large_ = std::make_shared<Large>(Large{absolute(value)});
        negative_ = true;
    }
}

Decimal Decimal::small(std::int64_t coefficient, int exponent) {
    while (exponent < 0 && coefficient % 10 == 0 && coefficient != 0) {
        coefficient /= 10;
        ++exponent;
    }
    Decimal result(coefficient);
    result.exponent_ = coefficient == 0 ? 0 : exponent;
    return result;
}

Decimal Decimal::greatest(bool negative) {
    Decimal result;
    result.large_ = std::make_shared<Large>(Large::from_digits(std::string(max_digits, '9')));
    result.negative_ = negative;
    result.exponent_ = max_exponent - max_digits + 1;
    return result;
}

Decimal Decimal::make(bool negative, Large coefficient, std::int64_t exponent) {
    if (const int surplus = coefficient.digit_count() - max_digits; surplus > 0) {
        coefficient.round_down(surplus);
        exponent += surplus;
    }
    if (exponent < 0)
        exponent += coefficient.drop_zeros(-exponent);
    if (coefficient.is_zero())
        return {};
    const std::int64_t first = exponent + coefficient.digit_count() - 1;
    if (first > max_exponent)
        return greatest(negative);
    if (first < -max_exponent)
        return {};

    Decimal result;
    result.exponent_ = static_cast<std::int32_t>(exponent);
    if (coefficient.value <= int64_max) {
        result.small_ = static_cast<std::int64_t>(coefficient.value);
        if (negative)
            result.small_ = -result.small_;
    } else {
        result.large_ = std::make_shared<Large>(std::move(coefficient));
        result.negative_ = negative;
    }
    return result;
}

Decimal Decimal::from_digits(const Collected& collected) {
    return make(collected.negative, Large::from_digits(collected.digits),
                collected.exponent + collected.text_exponent);
}

Decimal Decimal::from_double(double value) {
    if (std::isnan(value))
        return {};
    if (std::isinf(value))
        return greatest(value < 0);
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return parse({buffer.data(), static_cast<std::size_t>(end - buffer.data())})
        .value_or(Decimal());
}

std::optional<Decimal> Decimal::parse(std::string_view text) {
    const auto is_digit = [](char c) {
        return c >= '0' && c <= '9';
    };
    const auto take_sign = [&text] {
        const bool sign = !text.empty() && (text[0] == '-' || text[0] == '+');
        const bool negative = sign && text[0] == '-';
        text.remove_prefix(sign ? 1 : 0);
        return negative;
    };
    Collected collected;
    collected.negative = take_sign();
    for (; !text.empty() && (is_digit(text[0]) || (text[0] == '.' && !collected.point));
         text.remove_prefix(1)) {
        if (text[0] == '.')
            collected.point = true;
        else
            collected.push(text[0]);
    }
    if (!collected.any)
        return std::nullopt;
    if (!text.empty() && (text[0] == 'e' || text[0] == 'E')) {
        text.remove_prefix(1);
        const bool negative_exponent = take_sign();
        if (text.empty() || !is_digit(text[0]))
            return std::nullopt;
        for (; !text.empty() && is_digit(text[0]); text.remove_prefix(1))
            collected.push_exponent(text[0]);
        if (negative_exponent)
            collected.text_exponent = -collected.text_exponent;
    }
    if (!text.empty())
        return std::nullopt;
    return from_digits(collected);
}

Decimal Decimal::from_any_text(std::u16string_view text) {
    const auto is_digit = [&text](std::size_t i) {
        return i < text.size() && text[i] >= u'0' && text[i] <= u'9';
    };
    Collected collected;
    bool in_exponent = false;
    bool negative_exponent = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (is_digit(i)) {
            if (in_exponent)
                collected.push_exponent(static_cast<char>(unit));
            else
                collected.push(static_cast<char>(unit));
        } else if (unit == u'.') {
            collected.point = collected.point || !in_exponent;
        } else if (unit == u'-') {
            collected.negative = collected.negative || !(collected.any || collected.point);
        } else if ((unit == u'e' || unit == u'E') && !in_exponent && i > 0 && collected.any &&
                   (is_digit(i - 1) || text[i - 1] == u'.')) {
            // An "e" is an exponent only between digits; in "3 euro" it is a letter like any other.
            const bool sign = i + 1 < text.size() && (text[i + 1] == u'-' || text[i + 1] == u'+');
            if (is_digit(i + (sign ? 2 : 1))) {
                in_exponent = true;
                negative_exponent = sign && text[i + 1] == u'-';
                i += sign ? 1 : 0;
            }
        }
    }
    if (negative_exponent)
        collected.text_exponent = -collected.text_exponent;
    return from_digits(collected);
}

Decimal::Large Decimal::magnitude() const {
    return is_small() ? Large{absolute(small_)} : *large_;
}

int Decimal::top() const {
    return exponent_ + magnitude().digit_count() - 1;
}

std::string Decimal::to_text() const {
    if (is_small() && exponent_ == 0)
        return std::to_string(small_);
    std::string digits = magnitude().value.str();
    const std::string sign = is_negative() ? "-" : "";
    const int first = exponent_ + static_cast<int>(digits.size()) - 1;
    if (first > plain_exponent || first < -plain_exponent) {
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.size() > 1)
            digits.insert(1, ".");
        return sign + digits + "e" + std::to_string(first);
    }
    if (exponent_ >= 0)
        return sign + digits.append(static_cast<std::size_t>(exponent_), '0');
    if (first < 0)
        return sign + "." + std::string(static_cast<std::size_t>(-first - 1), '0') + digits;
    return sign + digits.insert(static_cast<std::size_t>(first) + 1, ".");
}

std::int64_t Decimal::to_int64() const {
    if (is_small() && exponent_ <= 0)
        return exponent_ < -max_power ? 0 : small_ / power(-exponent_);
    const std::int64_t saturated = is_negative() ? int64_min : int64_max;
    if (is_small())
        return scaled(small_, exponent_).value_or(saturated);
    if (exponent_ >= 0)
        return saturated;
    Large whole = *large_;
    whole.scale_down(-exponent_);
    if (whole.value > int64_max)
        return saturated;
    const auto value = static_cast<std::int64_t>(whole.value);
    return negative_ ? -value : value;
}

double Decimal::to_double() const {
    if (is_small() && exponent_ == 0)
        return static_cast<double>(small_);
    const std::string text = magnitude().value.str() + "e" + std::to_string(exponent_);
    double value = 0;
    const auto end = text.data() + text.size();
    if (std::from_chars(text.data(), end, value).ec == std::errc::result_out_of_range)
        value = top() > 0 ? std::numeric_limits<double>::infinity() : 0;
    return is_negative() ? -value : value;
}

bool Decimal::is_zero() const {
    return is_small() && small_ == 0;
}
bool Decimal::is_negative() const {
    return is_small() ? small_ < 0 : negative_;
}
bool Decimal::is_integer() const {
    return exponent_ >= 0;
}

Decimal Decimal::operator-() const {
    Decimal result = *this;
    result.small_ = -small_;
    result.negative_ = !negative_;
    return result;
}

Decimal::Aligned Decimal::align(const Decimal& a, const Decimal& b) {
    const int exponent = std::min(a.exponent_, b.exponent_);
    Aligned aligned{a.magnitude(), b.magnitude(), exponent};
    aligned.a.scale_up(a.exponent_ - exponent);
    aligned.b.scale_up(b.exponent_ - exponent);
    return aligned;
}

Decimal Decimal::add(const Decimal& a, const Decimal& b, bool negate_b) {
    const int exponent = std::min(a.exponent_, b.exponent_);
    if (a.is_small() && b.is_small() && std::abs(exponent) <= max_digits) {
        const auto left = scaled(a.small_, a.exponent_ - exponent);
        const auto right = scaled(negate_b ? -b.small_ : b.small_, b.exponent_ - exponent);
        std::int64_t sum = 0;
        if (left && right && !__builtin_add_overflow(*left, *right, &sum) && sum != int64_min)
            return small(sum, exponent);
    }
    const auto signed_b = [&] {
        return negate_b ? -b : b;
    };
    if (a.is_zero())
        return signed_b();
    if (b.is_zero())
        return a;
    // A number that lies entirely behind the last digit of the other one cannot change it; without
    // this a sum of far-apart numbers would be written out digit by digit.
    const int distance = a.top() - b.top();
    if (distance > max_digits + 1)
        return a;
    if (-distance > max_digits + 1)
        return signed_b();

    const Aligned aligned = align(a, b);
    const bool b_negative = b.is_negative() != negate_b;
    if (a.is_negative() == b_negative)
        return make(b_negative, {aligned.a.value + aligned.b.value}, aligned.exponent);
    if (aligned.a.value >= aligned.b.value)
        return make(a.is_negative(), {aligned.a.value - aligned.b.value}, aligned.exponent);
    return make(b_negative, {aligned.b.value - aligned.a.value}, aligned.exponent);
}

Decimal operator+(const Decimal& a, const Decimal& b) {
    return Decimal::add(a, b, false);
}
Decimal operator-(const Decimal& a, const Decimal& b) {
    return Decimal::add(a, b, true);
}

Decimal operator*(const Decimal& a, const Decimal& b) {
    const std::int64_t exponent = std::int64_t{a.exponent_} + b.exponent_;
    std::int64_t product = 0;
    if (a.is_small() && b.is_small() && exponent >= -Decimal::max_digits &&
        exponent <= Decimal::max_digits && !__builtin_mul_overflow(a.small_, b.small_, &product) &&
        product != int64_min)
        return Decimal::small(product, static_cast<int>(exponent));
    return Decimal::make(a.is_negative() != b.is_negative(),
                         {a.magnitude().value * b.magnitude().value}, exponent);
}

std::optional<Decimal> Decimal::divide(const Decimal& a, const Decimal& b, int precision) {
    if (b.is_zero())
        return std::nullopt;
    if (a.is_zero())
        return Decimal();
    precision = std::clamp(precision, 0, max_digits);
    const int first = a.top() - b.top(); // of the quotient, or one too high
    int fraction = precision;
    if (first < -precision)
        fraction = precision - first;
    fraction = std::min(fraction, max_digits - 1 - first);

    Large numerator = a.magnitude();
    Large denominator = b.magnitude();
    const int shift = a.exponent_ - b.exponent_ + fraction;
    numerator.scale_up(shift);
    denominator.scale_up(-shift);
    return make(a.is_negative() != b.is_negative(),
                Large::divide_rounded(numerator.value, denominator.value), -fraction);
}

Decimal Decimal::truncate(const Decimal& value) {
    if (value.is_integer())
        return value;
    if (value.is_small())
        return value.to_int64();
    Large whole = *value.large_;
    whole.scale_down(-value.exponent_);
    return make(value.negative_, std::move(whole), 0);
}

Decimal Decimal::floor(const Decimal& value) {
    if (value.is_integer())
        return value;
    const Decimal whole = truncate(value);
    return value.is_negative() ? whole - Decimal(1) : whole;
}

Decimal Decimal::round(const Decimal& value, int fraction_digits) {
    const int surplus =
        -value.exponent_ - std::clamp(fraction_digits, -2 * max_exponent, 2 * max_exponent);
    if (surplus <= 0)
        return value;
    Large coefficient = value.magnitude();
    coefficient.round_down(surplus);
    return make(value.is_negative(), std::move(coefficient), value.exponent_ + surplus);
}

std::strong_ordering operator<=>(const Decimal& a, const Decimal& b) {
    if (a.is_small() && b.is_small() && a.exponent_ == b.exponent_)
        return a.small_ <=> b.small_;
    const auto sign = [](const Decimal& value) {
        return value.is_zero() ? 0 : value.is_negative() ? -1 : 1;
    };
    if (sign(a) != sign(b) || sign(a) == 0)
        return sign(a) <=> sign(b);
    const Decimal& lower = a.is_negative() ? b : a;
    const Decimal& higher = a.is_negative() ? a : b;
    // Numbers of unlike size are told apart before the smaller exponent is written out.
    if (const int x = lower.top(), y = higher.top(); x != y)
        return x <=> y;
    const Decimal::Aligned aligned = Decimal::align(lower, higher);
    return aligned.a.value.compare(aligned.b.value) <=> 0;
}

bool operator==(const Decimal& a, const Decimal& b) {
    return (a <=> b) == 0;
}

} // namespace vell::console
