#include "src/host/vocabulary/registration.h"

#include "src/base/number_text.h"
#include "src/host/bridge/host_values.h"
#include "src/host/bridge/late_entry_points.h"
#include "src/host/diagnostics/debug_log.h"
#include "src/host/lifecycle/dispatcher.h"
#include "src/host/lifecycle/plugin_state.h"
#include "src/host/vocabulary/registry.h"

namespace vell::host {
namespace {

constexpr std::int16_t first_api_with_descriptions = 56;
constexpr std::int16_t first_api_with_steps = 57;

bool host_has_steps() {
    return plugin_state().api_version >= first_api_with_steps &&
           late_entry_points().register_step && late_entry_points().unregister_step;
}

QuadChar plugin_quad_char() {
    return QuadChar(mac_type({plugin_id[0], plugin_id[1], plugin_id[2], plugin_id[3], '\0'}));
}

// What the host answered, or the code of the failure that kept it from answering.
template <typename Call>
ErrorCode attempt(Call call) {
    try {
        return static_cast<ErrorCode>(call());
    } catch (const std::bad_alloc&) {
        return ErrorCode::OutOfMemory;
    } catch (...) {
        return ErrorCode::HostFailure;
    }
}

fm::Errcode register_function(const FunctionRow& row) {
    if (row.name().empty())
        return static_cast<fm::Errcode>(number(ErrorCode::NameNotBuilt));
    const QuadChar id = plugin_quad_char();
    const Text name(row.name());
    const Text prototype(row.prototype);
    const auto register_ex = late_entry_points().register_function_ex;
    if (plugin_state().api_version < first_api_with_descriptions || !register_ex)
        return host_call(FM_ExprEnv_RegisterExternalFunction, id.get(), row.registered_id(),
                         name.get(), prototype.get(), row.least_parameters.demanded,
                         row.max_parameters, row.flags, &dispatch);
    const Text description(std::string_view(function_description(row)));
    return host_call(register_ex, id.get(), row.registered_id(), name.get(), prototype.get(),
                     description.get(), row.least_parameters.demanded, row.max_parameters,
                     row.flags, &dispatch);
}

fm::Errcode register_step(const StepRow& row) {
    const QuadChar id = plugin_quad_char();
    const Text name(row.name);
    const Text definition(std::string_view(step_definition(row.parameters)));
    const Text description(std::string_view(step_description(row)));
    return host_call(late_entry_points().register_step, id.get(), row.id, name.get(),
                     definition.get(), description.get(), step_flags, &dispatch);
}

void note_failure(std::int16_t id) {
    debug_log().add_always("VlRegExternalFunc: Error with function ID= " +
                           to_text(std::int64_t{id}));
}

ErrorCode register_group(RegistrationGroup group) {
    for (const FunctionRow& row : function_rows()) {
        if (row.group != group)
            continue;
        if (const ErrorCode code = attempt([&] { return register_function(row); });
            code != ErrorCode::Ok) {
            note_failure(row.id);
            return code;
        }
        ++plugin_state().registered_functions;
    }
    return ErrorCode::Ok;
}

ErrorCode register_steps() {
    if (!host_has_steps())
        return ErrorCode::Ok;
    for (const StepRow& row : step_rows()) {
        if (const ErrorCode code = attempt([&] { return register_step(row); });
            code != ErrorCode::Ok) {
            note_failure(row.id);
            return code;
        }
    }
    return ErrorCode::Ok;
}

} // namespace

ErrorCode register_all() {
    ErrorCode first_failure = ErrorCode::Ok;
    for (const ErrorCode code : {register_group(RegistrationGroup::First),
                                 register_group(RegistrationGroup::Second), register_steps()})
        if (first_failure == ErrorCode::Ok)
            first_failure = code;
    return first_failure;
}

Unregistration unregister_all() {
    Unregistration outcome;
    const auto note = [&](ErrorCode code) {
        if (outcome.error == ErrorCode::Ok)
            outcome.error = code;
        return code == ErrorCode::Ok;
    };
    for (const FunctionRow& row : function_rows()) {
        const ErrorCode code = attempt([&] {
            const QuadChar id = plugin_quad_char();
            return host_call(FM_ExprEnv_UnRegisterExternalFunction, id.get(), row.registered_id());
        });
        if (note(code)) {
            ++outcome.functions;
            --plugin_state().registered_functions;
        }
    }
    if (host_has_steps()) {
        for (const StepRow& row : step_rows())
            note(attempt([&] {
                const QuadChar id = plugin_quad_char();
                return host_call(late_entry_points().unregister_step, id.get(), row.id);
            }));
    }
    outcome.remaining = plugin_state().registered_functions;
    return outcome;
}

} // namespace vell::host
