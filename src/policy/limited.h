// The limits of the call that runs on this thread.
#pragma once

#include "src/base/result.h"
#include "src/policy/call_scope.h"

namespace vell::policy {

// RefusedByPolicy when the call has no time left.
inline Result<void> check_time() {
    CallScope* const scope = CallScope::current();
    if (scope && !scope->has_time())
        return Failure{ErrorCode::RefusedByPolicy};
    return {};
}

// The same for memory that is about to be taken.
inline Result<void> check_memory(std::uint64_t bytes) {
    CallScope* const scope = CallScope::current();
    if (scope && !scope->take_memory(bytes))
        return Failure{ErrorCode::RefusedByPolicy};
    return {};
}

} // namespace vell::policy
