#include "src/plugin/licence.h"

namespace vell::plugin {

constinit const LicenceChecks own_licence_checks{
    .at_startup = [](bool server_host) -> LicenceStart {
        return {.passed = true, .log_calls = server_host};
    },
    .within_time = [] { return true; },
    .state = [] { return ErrorCode::Ok; },
};

} // namespace vell::plugin
