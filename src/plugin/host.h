// The host as the plug-in sees it: what it registers there, and the calls that come from there.
#pragma once

#include "src/params/call.h"
#include "src/plugin/vocabulary/registry.h"
#include "src/policy/call_origin.h"

#include <cstdint>
#include <string_view>

namespace vell::plugin {

// Where the vocabulary is registered. Each of its calls answers with the host's error number, Ok
// when it has done what it was asked for, and throws std::bad_alloc where the host has no memory,
// or anything else for a failure that it does not explain.
class Host {
  public:
    virtual ~Host() = default;

    // Comes first: looks up what a host of this API version offers.
    virtual void meet(std::int16_t api_version) = 0;
    virtual bool has_steps() const = 0;

    virtual ErrorCode add(const FunctionRow& row) = 0;
    virtual ErrorCode add(const StepRow& row) = 0;
    virtual ErrorCode remove_function(std::int16_t registered_id) = 0;
    virtual ErrorCode remove_step(std::int16_t id) = 0;
};

// One call of a function or step. Whatever the host refuses is thrown as by Host.
class HostCall {
  public:
    virtual ~HostCall() = default;

    // Where it comes from.
    virtual policy::CallOrigin origin() { return {}; }
    // The call as its body sees it; asked for once at most.
    virtual params::Call& open(bool is_step) = 0;
    // Puts a text, ASCII, in the place of a result.
    virtual void set_result(std::string_view text) = 0;
};

} // namespace vell::plugin
