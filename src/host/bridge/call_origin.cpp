#include "src/host/bridge/call_origin.h"

#include "src/host/bridge/host_data.h"
#include "src/host/bridge/late_entry_points.h"

namespace vell::host {
namespace {

std::u16string account_name(const fm::ExprEnv* environment) {
    const Text expression(std::string_view("Get ( AccountName )"));
    Data value;
    if (host_call(FM_ExprEnv_Evaluate, environment, expression.get(), value.get()) != 0)
        return {};
    const fm::Text* const text = text_of(value.get());
    return text ? to_utf16(text) : std::u16string();
}

} // namespace

policy::CallOrigin origin_of(const fm::ExprEnv* environment) {
    policy::CallOrigin origin;
    try {
        if (const auto session_id = late_entry_points().session_id)
            origin.session = host_call(session_id, environment);
        if (const auto file_id = late_entry_points().file_id)
            origin.file = host_call(file_id, environment);
        origin.account = account_name(environment);
    } catch (const std::exception&) {
        // The call itself may do without.
    }
    return origin;
}

} // namespace vell::host
