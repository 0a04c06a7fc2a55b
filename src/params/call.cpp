#include "src/params/call.h"

#include <limits>

namespace vell::params {

Result<std::uint32_t> Call::byte_count(std::size_t index) {
    const std::int64_t value = number(index);
    if (value < 0 || value > std::numeric_limits<std::int32_t>::max())
        return Failure{ErrorCode::NumberOutOfRange};
    return static_cast<std::uint32_t>(value);
}

Result<NativePath> Call::path(std::size_t index, const PathUse& use) {
    return resolve(Accept::Paths, text(index), use);
}

bool Call::option(std::size_t position, const SwitchSet& switches, std::string_view name) {
    const std::int32_t given = step_option(position);
    return given == not_given ? switches.has(name) : given != 0;
}

bool Call::option_is(std::size_t position, std::int32_t value, const SwitchSet& switches,
                     std::string_view name) {
    const std::int32_t given = step_option(position);
    return given == not_given ? switches.has(name) : given == value;
}

Result<void> not_available(Call&, System&) {
    return Failure{ErrorCode::NotAvailable};
}

} // namespace vell::params
