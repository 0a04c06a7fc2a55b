// Fixed-point numbers: decimal values with the precision of their divisions.
#include "console/fmwrapper/objects.h"

#include <algorithm>
#include <limits>

using namespace vell;
using console::checked;
using console::guarded;

fm::FixPt* FM_FixPt_Constructor1(std::int32_t value, int precision, fm::Status* status) {
    return console::create<fm::FixPt>(__func__, status, console::Decimal(value), precision);
}

void FM_FixPt_Delete(fm::FixPt* self, fm::Status* status) {
    console::destroy(self, status);
}

void FM_FixPt_AssignInt(fm::FixPt* self, std::int32_t value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = value; });
}

void FM_FixPt_AssignInt64(fm::FixPt* self, std::int64_t value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = value; });
}

void FM_FixPt_AssignDouble(fm::FixPt* self, double value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = console::Decimal::from_double(value); });
}

void FM_FixPt_AssignFixPt(fm::FixPt* self, const fm::FixPt* value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self) = checked(value); });
}

std::int32_t FM_FixPt_AsLong(const fm::FixPt* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        using Limits = std::numeric_limits<std::int32_t>;
        return static_cast<std::int32_t>(
            std::clamp<std::int64_t>(checked(self).value.to_int64(), Limits::min(), Limits::max()));
    });
}

std::int64_t FM_FixPt_AsLong64(const fm::FixPt* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).value.to_int64(); });
}

double FM_FixPt_AsFloat(const fm::FixPt* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).value.to_double(); });
}

void FM_FixPt_Add(const fm::FixPt* self, const fm::FixPt* argument, fm::FixPt* result,
                  fm::Status* status) {
    guarded(__func__, status,
            [&] { checked(result).value = checked(self).value + checked(argument).value; });
}

void FM_FixPt_Subtract(const fm::FixPt* self, const fm::FixPt* argument, fm::FixPt* result,
                       fm::Status* status) {
    guarded(__func__, status,
            [&] { checked(result).value = checked(self).value - checked(argument).value; });
}

void FM_FixPt_Multiply(const fm::FixPt* self, const fm::FixPt* argument, fm::FixPt* result,
                       fm::Status* status) {
    guarded(__func__, status,
            [&] { checked(result).value = checked(self).value * checked(argument).value; });
}

fm::Errcode FM_FixPt_Divide(const fm::FixPt* self, const fm::FixPt* argument, fm::FixPt* result,
                            fm::Status* status) {
    return guarded(__func__, status, [&] {
        const auto quotient =
            console::Decimal::divide(checked(self).value, checked(argument).value, self->precision);
        if (!quotient)
            return number(console::HostError::DivisionByZero);
        checked(result).value = *quotient;
        return number(console::HostError::None);
    });
}

void FM_FixPt_Negate(fm::FixPt* self, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = -self->value; });
}

void FM_FixPt_Increment(fm::FixPt* self, std::int32_t value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = self->value + console::Decimal(value); });
}

void FM_FixPt_Decrement(fm::FixPt* self, std::int32_t value, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).value = self->value - console::Decimal(value); });
}

bool FM_FixPt_operatorEQ(const fm::FixPt* self, const fm::FixPt* other, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).value == checked(other).value; });
}

bool FM_FixPt_operatorGT(const fm::FixPt* self, const fm::FixPt* other, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).value > checked(other).value; });
}

bool FM_FixPt_operatorLT(const fm::FixPt* self, const fm::FixPt* other, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).value < checked(other).value; });
}
