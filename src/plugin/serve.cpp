// What stands between the host's call and a function's body.
#include "src/base/number_text.h"
#include "src/plugin/plugin.h"

#include <new>
#include <optional>
#include <string>

namespace vell::plugin {

// A function's or step's row, as far as a call needs it.
struct Plugin::Entry {
    Body body;
    Served served;
    bool is_step;
    std::int16_t needed_parameters;
    const FunctionRow* function; // the one that a step mirrors; null for a step that mirrors none
    std::string_view step_name;

    // What policies and their logs call it.
    std::string_view name() const { return function ? function->name() : step_name; }
};

namespace {

constexpr std::string_view unreadable_parameter = "VellParamErr: XP7_GetBytesImproved failed";

const FunctionRow* function_of(const StepRow& step) {
    constexpr std::int16_t steps_from = 3000;
    return find_function(static_cast<std::int16_t>(step.id - steps_from));
}

// A body that failed may not have come to ask for all of its switches.
void note_unknown_switches(params::Call& call) {
    const params::AskedNames* const asked = call.asked_names();
    if (!asked)
        return;
    const params::SwitchSet switches = call.switches();
    for (const std::string_view word : asked->unknown_in(switches.text()))
        call.debug_note("No such switch: " + std::string(word));
}

// What a failure leaves as the result of its call.
std::int16_t report(HostCall& call, ErrorCode code) {
    if (code == ErrorCode::Ok)
        return 0;
    try {
        if (code == ErrorCode::ParameterUnreadable)
            call.set_result(unreadable_parameter);
        else
            call.set_result("$$" + to_text(std::int64_t{number(code)}));
        return 0;
    } catch (...) {
        return static_cast<std::int16_t>(number(code));
    }
}

} // namespace

std::optional<Plugin::Entry> Plugin::find_entry(std::int16_t id) {
    if (const FunctionRow* function = find_function(id))
        return Entry{.body = function->body,
                     .served = function->served,
                     .is_step = false,
                     .needed_parameters = function->least_parameters.needed,
                     .function = function,
                     .step_name = {}};
    if (const StepRow* step = find_step(id))
        return Entry{.body = step->body,
                     .served = step->served,
                     .is_step = true,
                     .needed_parameters = step->needed_parameters,
                     .function = function_of(*step),
                     .step_name = step->name};
    return std::nullopt;
}

// Runs the body; what it throws becomes its code. A failure always has one: the system may refuse
// something without saying why.
ErrorCode Plugin::outcome_of(const Entry& entry, HostCall& given) {
    try {
        params::Call& call = given.open(entry.is_step);
        if (call.parameter_count() < static_cast<std::size_t>(entry.needed_parameters))
            return ErrorCode::BadParameter;
        const Result<void> outcome = entry.body.run(call, *this);
        if (outcome) {
            note_unknown_switches(call);
            return ErrorCode::Ok;
        }
        return outcome.error() == ErrorCode::Ok ? ErrorCode::HostFailure : outcome.error();
    } catch (const std::bad_alloc&) {
        return ErrorCode::OutOfMemory;
    } catch (...) {
        return ErrorCode::HostFailure;
    }
}

// Whatever a body makes of a refusal, the call ends with it.
ErrorCode Plugin::guarded_outcome_of(const Entry& entry, HostCall& call, policy::CallScope& scope) {
    const bool is_denied = entry.served == Served::Always ? guard->denies_always(entry.name())
                                                          : guard->denies(entry.name());
    if (is_denied)
        scope.refuse(guard->policy().allows_nothing ? "policy" : "function");
    const ErrorCode code = is_denied ? ErrorCode::RefusedByPolicy : outcome_of(entry, call);
    if (code == ErrorCode::RefusedByPolicy)
        scope.refuse("limit"); // a body's own finding
    return scope.is_refused() ? ErrorCode::RefusedByPolicy : code;
}

// Leaves the outcome in the call, and its line in the policy's log.
std::int16_t Plugin::answer(const Entry& entry, HostCall& call) {
    if (!guard)
        return report(call, outcome_of(entry, call));
    const policy::CallOrigin origin = guard->is_audited() ? call.origin() : policy::CallOrigin();
    policy::CallScope scope(system.clock(), guard->policy().limits);
    const ErrorCode code = guarded_outcome_of(entry, call, scope);
    const std::int16_t answer = report(call, code);
    guard->write(origin, entry.name(), code, scope);
    return answer;
}

// What keeps a call from its body; Ok when nothing does.
ErrorCode Plugin::refusal() const {
    if (!licence->within_time())
        return ErrorCode::LicenceExpired;
    if (const ErrorCode code = licence->state(); code != ErrorCode::Ok)
        return code;
    return disabled.is_set() ? ErrorCode::FunctionsDisabled : ErrorCode::Ok;
}

void Plugin::log_call(std::string_view event, std::int16_t id) {
    log(std::string(event) + to_text(std::int64_t{id}));
}

std::int16_t Plugin::serve_logged(std::int16_t id, HostCall& call) {
    // Asked once: a call that switches the lines off or on has both of them, or none.
    const bool is_logged = state.logs_calls();
    if (is_logged)
        log_call("External function called. functionID: ", id);
    const std::optional<Entry> entry = find_entry(id);
    if (!entry || entry->served != Served::Always) {
        if (const ErrorCode code = refusal(); code != ErrorCode::Ok)
            return report(call, code);
    }
    if (!entry)
        return 0;
    const std::int16_t errcode = answer(*entry, call);
    if (is_logged)
        log_call("External function end. functionID: ", id);
    return errcode;
}

std::int16_t Plugin::serve(std::int16_t id, HostCall& call) {
    try {
        return serve_logged(id, call);
    } catch (...) { // the log's own allocations
        return static_cast<std::int16_t>(number(ErrorCode::OutOfMemory));
    }
}

} // namespace vell::plugin
