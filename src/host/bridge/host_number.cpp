#include "src/host/bridge/host_number.h"

#include "src/host/bridge/late_entry_points.h"

#include <limits>

namespace vell::host {
namespace {

constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr int precision = 16; // the host's own default

} // namespace

Number::Number(std::int32_t value)
    : HostObject(host_call(FM_FixPt_Constructor1, value, precision)) {}

void Number::assign(const fm::FixPt* value) {
    host_call(FM_FixPt_AssignFixPt, get(), value);
}

void Number::assign(std::int64_t value) {
    if (value >= lowest && value <= highest) {
        host_call(FM_FixPt_AssignInt, get(), static_cast<std::int32_t>(value));
        return;
    }
    if (const auto assign_int64 = late_entry_points().assign_int64) {
        host_call(assign_int64, get(), value);
        return;
    }
    // Older hosts: three digits to the base of 2^24, each within 32 bits with its sign.
    constexpr std::int32_t base = 1 << 24;
    const Number factor(base);
    host_call(FM_FixPt_AssignInt, get(), static_cast<std::int32_t>(value / base / base));
    for (const std::int64_t digit : {value / base % base, value % base}) {
        multiply(factor);
        add(Number(static_cast<std::int32_t>(digit)));
    }
}

// The host's arithmetic has its result in a third number.
void Number::add(const Number& other) {
    Number sum;
    host_call(FM_FixPt_Add, get(), other.get(), sum.get());
    assign(sum.get());
}

void Number::multiply(const Number& other) {
    Number product;
    host_call(FM_FixPt_Multiply, get(), other.get(), product.get());
    assign(product.get());
}

bool is_greater(const fm::FixPt* a, const Number& b) {
    return host_call(FM_FixPt_operatorGT, a, b.get());
}
bool is_less(const fm::FixPt* a, const Number& b) {
    return host_call(FM_FixPt_operatorLT, a, b.get());
}

std::int64_t to_integer(const fm::FixPt* number) {
    Number bound(highest);
    if (is_greater(number, bound))
        return std::int64_t{highest} + 1;
    bound.assign(std::int64_t{lowest});
    if (is_less(number, bound))
        return std::int64_t{lowest} - 1;
    return host_call(FM_FixPt_AsLong, number);
}

} // namespace vell::host
