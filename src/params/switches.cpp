#include "src/params/switches.h"

#include "src/base/ascii.h"

namespace vell::params {

bool SwitchSet::has(std::string_view name) const {
    return find_ignoring_case(text(), name) != std::string_view::npos;
}

std::string SwitchSet::value(std::string_view name, std::size_t capacity) const {
    const std::size_t found = find_ignoring_case(text(), name);
    if (found == std::string_view::npos)
        return {};
    std::string_view value = text().substr(found + name.size());
    value = value.substr(0, value.find('-', 1));
    value = value.substr(0, capacity > 0 ? capacity - 1 : 0);
    return std::string(name).append(value);
}

} // namespace vell::params
