#include "src/plugin/vocabulary/registration.h"

#include "src/base/number_text.h"
#include "src/plugin/debug_log.h"

#include <new>

namespace vell::plugin {
namespace {

// What the host answered, or the code of the failure that kept it from answering.
template <typename Call>
ErrorCode attempt(Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return ErrorCode::OutOfMemory;
    } catch (...) {
        return ErrorCode::HostFailure;
    }
}

std::string_view name_of(const FunctionRow& row) {
    return row.name();
}
std::string_view name_of(const StepRow& row) {
    return row.name;
}

template <typename Row>
ErrorCode add(Host& host, const Row& row, DebugLog& notes) {
    const ErrorCode code =
        name_of(row).empty() ? ErrorCode::NameNotBuilt : attempt([&] { return host.add(row); });
    if (code != ErrorCode::Ok)
        notes.add_always("VlRegExternalFunc: Error with function ID= " +
                         to_text(std::int64_t{row.id}));
    return code;
}

ErrorCode register_group(RegistrationGroup group, Host& host, PluginState& state, DebugLog& notes) {
    for (const FunctionRow& row : function_rows()) {
        if (row.group != group)
            continue;
        if (const ErrorCode code = add(host, row, notes); code != ErrorCode::Ok)
            return code;
        ++state.registered_functions;
    }
    return ErrorCode::Ok;
}

ErrorCode register_steps(Host& host, DebugLog& notes) {
    if (!host.has_steps())
        return ErrorCode::Ok;
    for (const StepRow& row : step_rows())
        if (const ErrorCode code = add(host, row, notes); code != ErrorCode::Ok)
            return code;
    return ErrorCode::Ok;
}

} // namespace

ErrorCode register_all(Host& host, PluginState& state, DebugLog& notes) {
    ErrorCode first_failure = ErrorCode::Ok;
    for (const ErrorCode code : {register_group(RegistrationGroup::First, host, state, notes),
                                 register_group(RegistrationGroup::Second, host, state, notes),
                                 register_steps(host, notes)})
        if (first_failure == ErrorCode::Ok)
            first_failure = code;
    return first_failure;
}

Unregistration unregister_all(Host& host, PluginState& state) {
    Unregistration outcome;
    const auto note = [&](ErrorCode code) {
        if (outcome.error == ErrorCode::Ok)
            outcome.error = code;
        return code == ErrorCode::Ok;
    };
    for (const FunctionRow& row : function_rows()) {
        if (note(attempt([&] { return host.remove_function(row.registered_id()); }))) {
            ++outcome.functions;
            --state.registered_functions;
        }
    }
    if (host.has_steps())
        for (const StepRow& row : step_rows())
            note(attempt([&] { return host.remove_step(row.id); }));
    outcome.remaining = state.registered_functions;
    return outcome;
}

} // namespace vell::plugin
