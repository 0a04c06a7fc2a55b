// Where the host says that a call comes from.
#pragma once

#include "src/host/bridge/fm_api.h"
#include "src/policy/call_origin.h"

namespace vell::host {

// What the host does not tell, or fails to, is left out.
policy::CallOrigin origin_of(const fm::ExprEnv* environment);

} // namespace vell::host
