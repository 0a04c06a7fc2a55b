// The stand-in's own interface: what it collected, what is alive, and failures on demand.
#include "console/fmwrapper/registry.h"

using namespace vell;
using console::call_counter;
using console::registry;
using console::StandInFailure;
using console::StandInObject;

namespace {

constexpr std::size_t kinds = static_cast<std::size_t>(StandInObject::Count_);
constexpr const char* kind_names[] = {"Text",           "Data",  "DataVect", "BinaryData",
                                      "DateTime",       "FixPt", "QuadChar", "Locale",
                                      "CharacterStyle", "Color", "ExprEnv"};
static_assert(std::size(kind_names) == kinds);

std::atomic<StandInFailure> planned_failure{StandInFailure::Unknown};
std::atomic<const char*> failed_call{nullptr};
std::atomic<std::uint64_t> calls_before{0}; // those that CallCount no longer counts

} // namespace

namespace vell::console {

void deliver_failure(const char* function, fm::Status* status) {
    call_counter.fail_at = 0;
    failed_call = function;
    const StandInFailure failure = planned_failure;
    if (failure == StandInFailure::AccessViolation) {
        // Read from memory, so that the compiler cannot know that nothing is there.
        static int* volatile nowhere = nullptr;
        *nowhere = 0;
    }
    set_status(status, static_cast<fm::StatusCode>(failure));
}

} // namespace vell::console

std::uint32_t StandIn_FunctionCount() {
    const std::lock_guard lock(registry().mutex);
    return static_cast<std::uint32_t>(registry().functions.size());
}

const console::StandInFunction* StandIn_FunctionAt(std::uint32_t index) {
    const std::lock_guard lock(registry().mutex);
    return index < registry().functions.size() ? &registry().functions[index]->shown : nullptr;
}

std::uint32_t StandIn_StepCount() {
    const std::lock_guard lock(registry().mutex);
    return static_cast<std::uint32_t>(registry().steps.size());
}

const console::StandInStep* StandIn_StepAt(std::uint32_t index) {
    const std::lock_guard lock(registry().mutex);
    return index < registry().steps.size() ? &registry().steps[index]->shown : nullptr;
}

void StandIn_FailRegistration(std::uint32_t n, fm::Errcode error) {
    const std::lock_guard lock(registry().mutex);
    registry().registration_error = {n, error};
}

void StandIn_FailUnregistration(std::uint32_t n, fm::Errcode error) {
    const std::lock_guard lock(registry().mutex);
    registry().unregistration_error = {n, error};
}

std::int64_t StandIn_LiveObjects(StandInObject kind) {
    const auto index = static_cast<std::size_t>(kind);
    return index < kinds ? console::live_objects[index].load() : 0;
}

const char* StandIn_ObjectName(StandInObject kind) {
    const auto index = static_cast<std::size_t>(kind);
    return index < kinds ? kind_names[index] : "";
}

std::int64_t StandIn_TotalLiveObjects() {
    std::int64_t total = 0;
    for (const auto& count : console::live_objects)
        total += count.load();
    return total;
}

void StandIn_FailCall(std::uint64_t n, StandInFailure failure) {
    call_counter.fail_at = 0;
    failed_call = nullptr;
    planned_failure = failure;
    if (n != 0)
        call_counter.fail_at = call_counter.calls + n;
}

std::uint64_t StandIn_CallCount() {
    return call_counter.calls - calls_before;
}

bool StandIn_FailureDelivered() {
    return failed_call != nullptr;
}

const char* StandIn_FailedCallName() {
    return failed_call;
}

void StandIn_SetIdentifiers(std::uint64_t session_id, std::uint64_t file_id) {
    const std::lock_guard lock(registry().mutex);
    registry().session_id = session_id;
    registry().file_id = file_id;
}

void StandIn_SetEvaluator(console::StandInEvaluator evaluator, void* context) {
    const std::lock_guard lock(registry().mutex);
    registry().evaluator = evaluator;
    registry().evaluator_context = context;
}

void StandIn_Reset() {
    StandIn_FailCall(0, StandInFailure::Unknown);
    calls_before = call_counter.calls.load();
    const std::lock_guard lock(registry().mutex);
    registry().functions.clear();
    registry().steps.clear();
    registry().registration_error = {};
    registry().unregistration_error = {};
}
