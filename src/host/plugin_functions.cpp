#include "src/host/plugin_functions.h"

#include "src/base/utf8.h"
#include "src/host/debug_log.h"
#include "src/host/plugin_state.h"

namespace vell::host {
namespace {

using params::Call;
using params::SwitchSet;

enum class ControlAction : std::int32_t {
    None = 0,
    DisableAll = control_disable_all,
    EnableAll = control_enable_all,
    CurrentStatus = control_current_status,
};

// None unless exactly one action is named.
ControlAction action_of(const SwitchSet& switches) {
    const bool disable = switches.has("DisableAllFunctions");
    const bool enable = switches.has("EnableAllFunctions");
    const bool status = switches.has("CurrentEnabledStatus");
    if (disable + enable + status != 1)
        return ControlAction::None;
    return disable  ? ControlAction::DisableAll
           : enable ? ControlAction::EnableAll
                    : ControlAction::CurrentStatus;
}

// Whether the switches are about the debug log; the call is answered then.
bool control_debug_log(Call& call, const SwitchSet& switches) {
    if (switches.has("-GetAndClearDebugLog")) {
        call.set_text(utf16_from_utf8(debug_log().take()));
        return true;
    }
    if (switches.has("-AddToDebugLog=true"))
        debug_log().switch_on();
    else if (switches.has("-AddToDebugLog=false"))
        debug_log().switch_off();
    else
        return false;
    call.set_done();
    return true;
}

} // namespace

Result<void> version(Call& call) {
    const SwitchSet switches = call.switches();
    if (switches.has("-getversionnumber"))
        call.set_number(plugin_version_number);
    else if (switches.has("-getversionstring"))
        call.set_literal(plugin_version);
    else
        call.set_literal(plugin_name_and_version);
    return {};
}

Result<void> version_auto_update(Call& call) {
    call.set_literal(auto_update_version);
    return {};
}

Result<void> control(Call& call) {
    const SwitchSet switches = call.switches();
    if (!call.is_step() && control_debug_log(call, switches))
        return {};
    const auto action =
        call.is_step() ? static_cast<ControlAction>(call.step_option(1)) : action_of(switches);
    const std::u16string password = call.text(call.is_step() ? 2 : 1);
    switch (action) {
    case ControlAction::DisableAll:
        if (disabled_state().is_set())
            return Failure{ErrorCode::AlreadyDisabled};
        if (password.empty())
            return Failure{ErrorCode::BadParameter};
        if (!disabled_state().disable(password))
            return Failure{ErrorCode::AlreadyDisabled};
        call.set_done();
        return {};
    case ControlAction::EnableAll:
        if (!disabled_state().enable(password))
            return Failure{ErrorCode::ControlRefused};
        call.set_done();
        return {};
    case ControlAction::CurrentStatus:
        call.set_number(disabled_state().is_set() ? 0 : 1);
        return {};
    default:
        return Failure{ErrorCode::ControlRefused};
    }
}

} // namespace vell::host
