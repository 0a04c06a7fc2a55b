#include "src/plugin/vocabulary/own_functions.h"

#include "src/base/utf8.h"
#include "src/plugin/plugin.h"

#include <optional>
#include <string>

namespace vell::plugin {
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

bool names_action(const SwitchSet& switches) {
    return switches.has("DisableAllFunctions") || switches.has("EnableAllFunctions") ||
           switches.has("CurrentEnabledStatus");
}

constexpr std::string_view collect_switch = "-AddToDebugLog";
constexpr std::string_view take_switch = "-GetAndClearDebugLog";
constexpr std::string_view call_lines_switch = "-LogCalls";

bool names_log(const SwitchSet& switches) {
    return switches.has(collect_switch) || switches.has(take_switch) ||
           switches.has(call_lines_switch);
}

// What "name=true" or "name=false" says; nullopt when the name is not there. ControlRefused for
// both and for any other value.
Result<std::optional<bool>> truth_of(const SwitchSet& switches, std::string_view name) {
    const bool on = switches.has(std::string(name) + "=true");
    const bool off = switches.has(std::string(name) + "=false");
    if (on == off && (on || switches.has(name)))
        return Failure{ErrorCode::ControlRefused};
    return on || off ? std::optional(on) : std::nullopt;
}

// Does all that the switches say about the logs, or nothing. What was collected is taken first.
Result<void> control_logs(Call& call, Plugin& plugin, const SwitchSet& switches) {
    const std::optional<bool> collect = VELL_TRY(truth_of(switches, collect_switch));
    const std::optional<bool> call_lines = VELL_TRY(truth_of(switches, call_lines_switch));
    if (names_action(switches))
        return Failure{ErrorCode::ControlRefused};
    if (switches.has(take_switch))
        call.set_text(utf16_from_utf8(plugin.debug_log.take()));
    else
        call.set_done();
    if (collect)
        *collect ? plugin.debug_log.switch_on() : plugin.debug_log.switch_off();
    if (call_lines)
        plugin.state.call_lines = *call_lines;
    return {};
}

} // namespace

Result<void> version(Call& call, Plugin& plugin) {
    const SwitchSet switches = call.switches();
    if (switches.has("-getversionnumber"))
        call.set_number(plugin_version_number);
    else if (switches.has("-getversionstring"))
        call.set_literal(plugin_version);
    else if (switches.has("-GetLibraries"))
        call.set_text(utf16_from_utf8(plugin.library_versions("\r")));
    else
        call.set_literal(plugin_name_and_version);
    return {};
}

Result<void> version_auto_update(Call& call, Plugin&) {
    call.set_literal(auto_update_version);
    return {};
}

Result<void> control(Call& call, Plugin& plugin) {
    const SwitchSet switches = call.switches();
    if (!call.is_step() && names_log(switches))
        return control_logs(call, plugin, switches);
    const auto action =
        call.is_step() ? static_cast<ControlAction>(call.step_option(1)) : action_of(switches);
    const std::u16string password = call.text(call.is_step() ? 2 : 1);
    switch (action) {
    case ControlAction::DisableAll:
        if (plugin.guard && plugin.guard->denies(policy::disable_all_action))
            return policy::PathGuard::refuse("function");
        if (plugin.disabled.is_set())
            return Failure{ErrorCode::AlreadyDisabled};
        if (password.empty())
            return Failure{ErrorCode::BadParameter};
        if (!plugin.disabled.disable(password))
            return Failure{ErrorCode::AlreadyDisabled};
        call.set_done();
        return {};
    case ControlAction::EnableAll:
        if (!plugin.disabled.enable(password))
            return Failure{ErrorCode::ControlRefused};
        call.set_done();
        return {};
    case ControlAction::CurrentStatus:
        call.set_number(plugin.disabled.is_set() ? 0 : 1);
        return {};
    default:
        return Failure{ErrorCode::ControlRefused};
    }
}

Result<void> drag_and_drop(Call& call, Plugin& plugin) {
    return plugin.drops.drag_and_drop(call);
}

Result<void> stop_drop_handlers(Call& call, Plugin& plugin) {
    return plugin.drops.stop_all(call);
}

} // namespace vell::plugin
