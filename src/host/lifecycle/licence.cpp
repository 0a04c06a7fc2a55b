#include "src/host/lifecycle/licence.h"

namespace vell::host {
namespace {

constexpr LicenceChecks own_checks{
    .at_startup = [](bool server_host) -> LicenceStart {
        return {.passed = true, .log_calls = server_host};
    },
    .within_time = [] { return true; },
    .state = [] { return ErrorCode::Ok; },
};

const LicenceChecks* current = &own_checks;

} // namespace

const LicenceChecks& licence_checks() {
    return *current;
}

void replace_licence_checks(const LicenceChecks* checks) {
    current = checks ? checks : &own_checks;
}

} // namespace vell::host
