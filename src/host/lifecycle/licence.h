// The seam for licence checks. This product has no licensing: the checks pass, and the only thing
// that the start-up check decides is whether calls are logged. Tests make the checks fail.
#pragma once

#include "src/base/error_code.h"

namespace vell::host {

struct LicenceStart {
    bool passed;
    bool log_calls; // becomes the server-log flag
};

struct LicenceChecks {
    LicenceStart (*at_startup)(bool server_host);
    bool (*within_time)(); // asked before every call but those that are always served
    ErrorCode (*state)();  // a code other than Ok is the result of every such call
};

const LicenceChecks& licence_checks();

// Puts other checks in place; null restores the product's own.
void replace_licence_checks(const LicenceChecks* checks);

} // namespace vell::host
