// What stands between the host's call and a function's body.
#include "src/base/number_text.h"
#include "src/plugin/plugin.h"

#include <new>
#include <optional>
#include <string>

namespace vell::plugin {
namespace {

constexpr std::string_view unreadable_parameter = "VellParamErr: XP7_GetBytesImproved failed";

// A function's or step's row, as far as a call needs it.
struct Entry {
    Body body;
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

// A body that failed may not have come to ask for all of its switches.
void note_unknown_switches(params::Call& call) {
    const params::AskedNames* const asked = call.asked_names();
    if (!asked)
        return;
    const params::SwitchSet switches = call.switches();
    for (const std::string_view word : asked->unknown_in(switches.text()))
        call.debug_note("No such switch: " + std::string(word));
}

// Runs the body; what it throws becomes its code. A failure always has one: the system may refuse
// something without saying why.
ErrorCode outcome_of(const Entry& entry, HostCall& given, Plugin& plugin) {
    try {
        params::Call& call = given.open(entry.is_step);
        if (call.parameter_count() < static_cast<std::size_t>(entry.needed_parameters))
            return ErrorCode::BadParameter;
        const Result<void> outcome = entry.body.run(call, plugin);
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
    const std::int16_t answer = report(call, outcome_of(*entry, call, *this));
    if (is_logged)
        log_call("External function end. functionID: ", id);
    return answer;
}

std::int16_t Plugin::serve(std::int16_t id, HostCall& call) {
    try {
        return serve_logged(id, call);
    } catch (...) { // the log's own allocations
        return static_cast<std::int16_t>(number(ErrorCode::OutOfMemory));
    }
}

} // namespace vell::plugin
