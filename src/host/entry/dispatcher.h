// The one body that the host calls for every function and step.
#pragma once

#include "src/host/bridge/fm_api.h"

namespace vell::host {

// Plugin::serve() for a call of the host. Nothing escapes: no exception, and a system exception
// ends the process behind a crash report.
fm::Errcode dispatch(std::int16_t id, const fm::ExprEnv* environment,
                     const fm::DataVect* parameters, fm::Data* result);

} // namespace vell::host
