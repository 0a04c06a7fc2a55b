// The one body that the host calls for every function and step.
#pragma once

#include "src/host/bridge/fm_api.h"
#include "src/params/call.h"

namespace vell::host {

// Checks, runs the body of the ID and leaves exactly one value in `result`. Nothing escapes: no
// exception, and a system exception ends the process behind a crash report. Returns 0 when the
// outcome, a failure included, stands in the result; the code of the failure when the host could
// not even take that.
fm::Errcode dispatch(std::int16_t id, const fm::ExprEnv* environment,
                     const fm::DataVect* parameters, fm::Data* result);

// What the host hands over with each call.
struct HostArguments {
    const fm::ExprEnv* environment;
    const fm::DataVect* parameters;
    fm::Data* result;
};

// The part of a call that is its body's: runs it, and what it fails with or throws becomes the
// result. Returns as dispatch() does.
fm::Errcode run_body(params::Body body, bool is_step, const HostArguments& given);

} // namespace vell::host
