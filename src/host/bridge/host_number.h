// Numbers of the host: decimal, with the host's precision.
#pragma once

#include "src/host/bridge/host_values.h"

#include <cstdint>

namespace vell::host {

class Number : public HostObject<fm::FixPt> {
  public:
    explicit Number(std::int32_t value = 0);

    // Exact for every 64-bit value, on hosts without 64-bit numbers too.
    void assign(std::int64_t value);
    void assign(const fm::FixPt* value);

    // The number itself becomes the sum or product.
    void add(const Number& other);
    void multiply(const Number& other);
};

bool is_greater(const fm::FixPt* a, const Number& b);
bool is_less(const fm::FixPt* a, const Number& b);

// The integer part; a value outside the signed 32-bit range comes as the first number beyond it.
std::int64_t to_integer(const fm::FixPt* number);

} // namespace vell::host
