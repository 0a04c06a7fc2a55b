#include "src/host/lifecycle/dispatcher.h"

#include "src/base/number_text.h"
#include "src/host/bridge/host_call_object.h"
#include "src/host/diagnostics/log_file.h"
#include "src/host/lifecycle/guarded_call.h"
#include "src/host/lifecycle/licence.h"
#include "src/host/lifecycle/plugin_state.h"
#include "src/host/vocabulary/registry.h"
#include "src/windows/error_windows.h"
#include "src/windows/system.h"

#include <optional>

namespace vell::host {
namespace {

// A function's or step's row, as far as a call needs it.
struct Entry {
    params::Body body;
    Served served;
    bool is_step;
    std::int16_t needed_parameters;
};

std::optional<Entry> find_entry(std::int16_t id) {
    if (const FunctionRow* function = find_function(id))
        return Entry{function->body, function->served, false, function->least_parameters.needed};
    if (const StepRow* step = find_step(id))
        return Entry{step->body, step->served, true, step->needed_parameters};
    return std::nullopt;
}

// What keeps a call from its body; Ok when nothing does.
ErrorCode refusal() {
    const LicenceChecks& licence = licence_checks();
    if (!licence.within_time())
        return ErrorCode::LicenceExpired;
    if (const ErrorCode state = licence.state(); state != ErrorCode::Ok)
        return state;
    return disabled_state().is_set() ? ErrorCode::FunctionsDisabled : ErrorCode::Ok;
}

// Runs the body; what it throws becomes its code. A failure always has one: the system may refuse
// something without saying why.
ErrorCode outcome_of(const Entry& entry, const HostArguments& given) {
    try {
        HostCallObject call(given.environment, given.parameters, given.result, entry.is_step);
        if (call.parameter_count() < static_cast<std::size_t>(entry.needed_parameters))
            return ErrorCode::BadParameter;
        const Result<void> outcome = entry.body(call, windows::system());
        if (outcome)
            return ErrorCode::Ok;
        return outcome.error() == ErrorCode::Ok ? ErrorCode::HostFailure : outcome.error();
    } catch (const std::bad_alloc&) {
        return ErrorCode::OutOfMemory;
    } catch (...) {
        return ErrorCode::HostFailure;
    }
}

void log_call(std::string_view event, std::int16_t id) {
    log_line(std::string(event) + to_text(std::int64_t{id}));
}

fm::Errcode report(fm::Data* result, ErrorCode code) {
    if (code == ErrorCode::Ok)
        return 0;
    try {
        store_code(result, code);
        return 0;
    } catch (...) {
        return static_cast<fm::Errcode>(number(code));
    }
}

fm::Errcode serve(std::int16_t id, const HostArguments& given) {
    // Asked once: a call that switches the lines off or on has both of them, or none.
    const bool is_logged = plugin_state().logs_calls();
    if (is_logged)
        log_call("External function called. functionID: ", id);
    std::optional<NoErrorWindows> quiet;
    if (!plugin_state().can_ask_user)
        quiet.emplace();
    const std::optional<Entry> entry = find_entry(id);
    if (!entry || entry->served != Served::Always) {
        if (const ErrorCode code = refusal(); code != ErrorCode::Ok)
            return report(given.result, code);
    }
    if (!entry)
        return 0;
    const fm::Errcode errcode = report(given.result, outcome_of(*entry, given));
    if (is_logged)
        log_call("External function end. functionID: ", id);
    return errcode;
}

struct GuardedArguments {
    std::int16_t id;
    HostArguments given;
    fm::Errcode errcode = 0;
};

void serve_guarded(void* arguments) {
    auto& call = *static_cast<GuardedArguments*>(arguments);
    try {
        call.errcode = serve(call.id, call.given);
    } catch (...) { // the log's own allocations
        call.errcode = static_cast<fm::Errcode>(number(ErrorCode::OutOfMemory));
    }
}

} // namespace

fm::Errcode run_body(params::Body body, bool is_step, const HostArguments& given) {
    return report(given.result, outcome_of({body, Served::Always, is_step, 0}, given));
}

fm::Errcode dispatch(std::int16_t id, const fm::ExprEnv* environment,
                     const fm::DataVect* parameters, fm::Data* result) {
    GuardedArguments arguments{id, {environment, parameters, result}};
    guarded_call(serve_guarded, &arguments);
    return arguments.errcode;
}

} // namespace vell::host
