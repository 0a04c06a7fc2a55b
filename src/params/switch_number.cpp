#include "src/params/switch_number.h"

#include <limits>

namespace vell::params {

std::optional<std::int64_t> switch_number(const SwitchSet& switches, std::string_view name) {
    constexpr std::size_t value_capacity = 100;
    constexpr std::int64_t almost_largest = std::numeric_limits<std::int64_t>::max() / 10 - 1;
    const std::string value = switches.value(name, value_capacity);
    const std::size_t start = value.find_first_not_of("= ", name.size());
    std::optional<std::int64_t> number;
    for (std::size_t i = start; i < value.size() && value[i] >= '0' && value[i] <= '9'; ++i)
        number = std::min(number.value_or(0), almost_largest) * 10 + (value[i] - '0');
    return number;
}

} // namespace vell::params
