#include "console/model/natural.h"

#include <algorithm>
#include <array>

namespace vell::console {

namespace {

constexpr std::uint32_t base = 1'000'000'000;
constexpr int limb_digits = 9;
constexpr std::array<std::uint32_t, 10> powers = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

std::uint32_t low_part(std::uint64_t value) {
    return static_cast<std::uint32_t>(value % base);
}
std::uint32_t high_part(std::uint64_t value) {
    return static_cast<std::uint32_t>(value / base);
}

} // namespace

struct Natural::Division {
    Natural quotient;
    Natural remainder;
};

Natural::Natural(std::uint64_t value) {
    for (; value != 0; value /= base)
        limbs_.push_back(low_part(value));
}

Natural Natural::from_digits(std::string_view digits) {
    Natural result;
    result.limbs_.reserve(digits.size() / limb_digits + 1);
    while (!digits.empty()) {
        const std::size_t length = std::min<std::size_t>(digits.size(), limb_digits);
        std::uint32_t limb = 0;
        for (const char digit : digits.substr(digits.size() - length))
            limb = limb * 10 + static_cast<std::uint32_t>(digit - '0');
        result.limbs_.push_back(limb);
        digits.remove_suffix(length);
    }
    result.trim();
    return result;
}

void Natural::trim() {
    while (!limbs_.empty() && limbs_.back() == 0)
        limbs_.pop_back();
}

int Natural::digit_count() const {
    if (limbs_.empty())
        return 0;
    int digits = 1;
    while (digits < limb_digits && limbs_.back() >= powers[static_cast<std::size_t>(digits)])
        ++digits;
    return digits + limb_digits * static_cast<int>(limbs_.size() - 1);
}

int Natural::digit_at(int position) const {
    const auto limb = static_cast<std::size_t>(position / limb_digits);
    if (limb >= limbs_.size())
        return 0;
    const std::uint32_t power = powers[static_cast<std::size_t>(position % limb_digits)];
    return static_cast<int>(limbs_[limb] / power % 10);
}

int Natural::trailing_zeros() const {
    int zeros = 0;
    for (const std::uint32_t limb : limbs_) {
        if (limb != 0) {
            for (std::uint32_t rest = limb; rest % 10 == 0; rest /= 10)
                ++zeros;
            break;
        }
        zeros += limb_digits;
    }
    return zeros;
}

std::optional<std::uint64_t> Natural::to_uint64() const {
    std::uint64_t value = 0;
    for (auto limb = limbs_.rbegin(); limb != limbs_.rend(); ++limb) {
        if (__builtin_mul_overflow(value, base, &value) ||
            __builtin_add_overflow(value, *limb, &value))
            return std::nullopt;
    }
    return value;
}

std::string Natural::to_digits() const {
    if (limbs_.empty())
        return "0";
    std::string text = std::to_string(limbs_.back());
    for (auto limb = limbs_.rbegin() + 1; limb != limbs_.rend(); ++limb) {
        const std::string digits = std::to_string(*limb);
        text.append(static_cast<std::size_t>(limb_digits) - digits.size(), '0').append(digits);
    }
    return text;
}

std::uint32_t Natural::multiply_small(std::uint32_t factor, std::uint32_t carry) {
    for (std::uint32_t& limb : limbs_) {
        const std::uint64_t product = std::uint64_t{limb} * factor + carry;
        limb = low_part(product);
        carry = high_part(product);
    }
    return carry;
}

std::uint32_t Natural::divide_small(std::uint32_t divisor) {
    std::uint64_t remainder = 0;
    for (auto limb = limbs_.rbegin(); limb != limbs_.rend(); ++limb) {
        const std::uint64_t value = remainder * base + *limb;
        *limb = static_cast<std::uint32_t>(value / divisor);
        remainder = value % divisor;
    }
    trim();
    return static_cast<std::uint32_t>(remainder);
}

void Natural::scale_up(int digits) {
    if (limbs_.empty() || digits <= 0)
        return;
    const std::uint32_t carry =
        multiply_small(powers[static_cast<std::size_t>(digits % limb_digits)], 0);
    if (carry != 0)
        limbs_.push_back(carry);
    limbs_.insert(limbs_.begin(), static_cast<std::size_t>(digits / limb_digits), 0);
}

void Natural::scale_down(int digits) {
    if (digits <= 0)
        return;
    const auto whole = static_cast<std::size_t>(digits / limb_digits);
    if (whole >= limbs_.size()) {
        limbs_.clear();
        return;
    }
    limbs_.erase(limbs_.begin(), limbs_.begin() + static_cast<std::ptrdiff_t>(whole));
    divide_small(powers[static_cast<std::size_t>(digits % limb_digits)]);
}

void Natural::round_down(int digits) {
    if (digits <= 0)
        return;
    const bool up = digit_at(digits - 1) >= 5;
    scale_down(digits);
    if (up)
        *this = *this + Natural(1);
}

Natural operator+(const Natural& a, const Natural& b) {
    const Natural& longer = a.limbs_.size() >= b.limbs_.size() ? a : b;
    const Natural& shorter = &longer == &a ? b : a;
    Natural sum = longer;
    std::uint32_t carry = 0;
    for (std::size_t i = 0; i < sum.limbs_.size(); ++i) {
        if (i >= shorter.limbs_.size() && carry == 0)
            return sum;
        const std::uint32_t limb =
            sum.limbs_[i] + carry + (i < shorter.limbs_.size() ? shorter.limbs_[i] : 0);
        carry = limb >= base ? 1 : 0;
        sum.limbs_[i] = carry != 0 ? limb - base : limb;
    }
    if (carry != 0)
        sum.limbs_.push_back(carry);
    return sum;
}

Natural operator-(const Natural& a, const Natural& b) {
    Natural difference = a;
    std::uint32_t borrow = 0;
    for (std::size_t i = 0; i < difference.limbs_.size(); ++i) {
        const std::uint32_t taken = borrow + (i < b.limbs_.size() ? b.limbs_[i] : 0);
        std::uint32_t& limb = difference.limbs_[i];
        borrow = limb < taken ? 1 : 0;
        limb = borrow != 0 ? limb + base - taken : limb - taken;
    }
    difference.trim();
    return difference;
}

Natural operator*(const Natural& a, const Natural& b) {
    Natural product;
    if (a.is_zero() || b.is_zero())
        return product;
    product.limbs_.assign(a.limbs_.size() + b.limbs_.size(), 0);
    for (std::size_t i = 0; i < a.limbs_.size(); ++i) {
        std::uint32_t carry = 0;
        for (std::size_t j = 0; j < b.limbs_.size(); ++j) {
            const std::uint64_t value =
                std::uint64_t{a.limbs_[i]} * b.limbs_[j] + product.limbs_[i + j] + carry;
            product.limbs_[i + j] = low_part(value);
            carry = high_part(value);
        }
        product.limbs_[i + b.limbs_.size()] = carry;
    }
    product.trim();
    return product;
}

// Schoolbook division: both operands are scaled so that the divisor's top limb is at least half the
// base, which keeps the estimate of each quotient limb at most two too high.
Natural::Division Natural::divide(const Natural& a, const Natural& b) {
    Division result;
    if (a < b) {
        result.remainder = a;
        return result;
    }
    if (b.limbs_.size() == 1) {
        result.quotient = a;
        result.remainder = Natural(result.quotient.divide_small(b.limbs_[0]));
        return result;
    }
    const std::uint32_t scale = base / (b.limbs_.back() + 1);
    Natural rest = a;
    rest.limbs_.push_back(rest.multiply_small(scale, 0));
    Natural divisor = b;
    divisor.multiply_small(scale, 0);

    const std::size_t length = divisor.limbs_.size();
    const std::uint64_t first = divisor.limbs_[length - 1];
    const std::uint64_t second = divisor.limbs_[length - 2];
    result.quotient.limbs_.assign(rest.limbs_.size() - length, 0);
    for (std::size_t place = rest.limbs_.size() - length; place-- > 0;) {
        std::uint32_t* part = rest.limbs_.data() + place;
        const std::uint64_t top = std::uint64_t{part[length]} * base + part[length - 1];
        std::uint64_t estimate = top / first;
        std::uint64_t left = top % first;
        while (estimate >= base || estimate * second > left * base + part[length - 2]) {
            --estimate;
            left += first;
            if (left >= base)
                break;
        }
        std::uint64_t carry = 0;
        std::uint32_t borrow = 0;
        for (std::size_t i = 0; i <= length; ++i) {
            const std::uint64_t product =
                carry + (i < length ? estimate * divisor.limbs_[i] : std::uint64_t{0});
            carry = product / base;
            const std::uint32_t taken = low_part(product) + borrow;
            borrow = part[i] < taken ? 1 : 0;
            part[i] = borrow != 0 ? part[i] + base - taken : part[i] - taken;
        }
        if (borrow != 0) { // the estimate was one too high: give one divisor back
            --estimate;
            std::uint32_t over = 0;
            for (std::size_t i = 0; i <= length; ++i) {
                const std::uint32_t sum = part[i] + over + (i < length ? divisor.limbs_[i] : 0);
                over = sum >= base ? 1 : 0;
                part[i] = over != 0 ? sum - base : sum;
            }
        }
        result.quotient.limbs_[place] = static_cast<std::uint32_t>(estimate);
    }
    result.quotient.trim();
    rest.trim();
    rest.divide_small(scale);
    result.remainder = std::move(rest);
    return result;
}

Natural Natural::divide_rounded(const Natural& a, const Natural& b) {
    Division division = divide(a, b);
    if (division.remainder + division.remainder >= b)
        return division.quotient + Natural(1);
    return std::move(division.quotient);
}

std::strong_ordering operator<=>(const Natural& a, const Natural& b) {
    if (a.limbs_.size() != b.limbs_.size())
        return a.limbs_.size() <=> b.limbs_.size();
    for (std::size_t i = a.limbs_.size(); i-- > 0;) {
        if (a.limbs_[i] != b.limbs_[i])
            return a.limbs_[i] <=> b.limbs_[i];
    }
    return std::strong_ordering::equal;
}

} // namespace vell::console
