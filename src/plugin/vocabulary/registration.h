// Registers the vocabulary with the host and takes it back.
#pragma once

#include "src/plugin/host.h"
#include "src/plugin/plugin_state.h"

namespace vell::plugin {

class DebugLog;

// Registers every function, and the script steps where the host has them. A failure ends its group
// of functions (or the steps) and is noted in the debug log. The first failure's code, or Ok.
ErrorCode register_all(Host& host, PluginState& state, DebugLog& notes);

struct Unregistration {
    std::int32_t functions = 0; // unregistered
    std::int32_t remaining = 0; // functions still counted as registered
    ErrorCode error = ErrorCode::Ok;
};

// Takes back every function and step, those that were never registered too.
Unregistration unregister_all(Host& host, PluginState& state);

} // namespace vell::plugin
