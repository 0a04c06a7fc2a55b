#include "src/host/entry/host_vocabulary.h"

#include "src/host/bridge/host_values.h"
#include "src/host/bridge/late_entry_points.h"
#include "src/host/entry/dispatcher.h"
#include "src/plugin/plugin_state.h"

namespace vell::host {
namespace {

using plugin::FunctionRow;
using plugin::StepRow;

QuadChar plugin_quad_char() {
    return QuadChar(mac_type(plugin::plugin_id));
}

} // namespace

void HostVocabulary::meet(std::int16_t api_version) {
    find_late_entry_points(api_version);
}

bool HostVocabulary::has_steps() const {
    return late_entry_points().register_step && late_entry_points().unregister_step;
}

ErrorCode HostVocabulary::add(const FunctionRow& row) {
    const QuadChar id = plugin_quad_char();
    const Text name(row.name());
    const Text prototype(row.prototype);
    const auto register_ex = late_entry_points().register_function_ex;
    if (!register_ex)
        return static_cast<ErrorCode>(host_call(FM_ExprEnv_RegisterExternalFunction, id.get(),
                                                row.registered_id(), name.get(), prototype.get(),
                                                row.least_parameters.demanded, row.max_parameters,
                                                row.flags, &dispatch));
    const Text description(std::string_view(plugin::function_description(row)));
    return static_cast<ErrorCode>(host_call(
        register_ex, id.get(), row.registered_id(), name.get(), prototype.get(), description.get(),
        row.least_parameters.demanded, row.max_parameters, row.flags, &dispatch));
}

ErrorCode HostVocabulary::add(const StepRow& row) {
    const QuadChar id = plugin_quad_char();
    const Text name(row.name);
    const Text definition(std::string_view(plugin::step_definition(row.parameters)));
    const Text description(std::string_view(plugin::step_description(row)));
    return static_cast<ErrorCode>(host_call(late_entry_points().register_step, id.get(), row.id,
                                            name.get(), definition.get(), description.get(),
                                            plugin::step_flags, &dispatch));
}

ErrorCode HostVocabulary::remove_function(std::int16_t registered_id) {
    const QuadChar id = plugin_quad_char();
    return static_cast<ErrorCode>(
        host_call(FM_ExprEnv_UnRegisterExternalFunction, id.get(), registered_id));
}

ErrorCode HostVocabulary::remove_step(std::int16_t step_id) {
    const QuadChar id = plugin_quad_char();
    return static_cast<ErrorCode>(
        host_call(late_entry_points().unregister_step, id.get(), step_id));
}

} // namespace vell::host
