// The seam for licence checks. This product has no licensing: the checks pass, and the only thing
// that the start-up check decides is whether calls are logged. Tests make the checks fail.
#pragma once

#include "src/base/error_code.h"

namespace vell::plugin {

struct LicenceStart {
    bool passed;
    bool log_calls; // becomes the server-log flag
};

struct LicenceChecks {
    LicenceStart (*at_startup)(bool server_host);
    bool (*within_time)(); // asked before every call but those that are always served
    ErrorCode (*state)();  // a code other than Ok is the result of every such call
};

extern const LicenceChecks own_licence_checks;

} // namespace vell::plugin
