// What the console host and the tests ask of the stand-in FMWrapper.dll beside the host's own
// interface: the registrations that it collected, counts of live objects, and failures on demand.
#pragma once

#include "src/host/bridge/fm_api.h"

#include <cstdint>

namespace vell::console {

// Texts stay valid until the entry is unregistered or StandIn_Reset is called. Strings are
// zero-terminated.
struct StandInFunction {
    char plugin_id[4];
    std::int16_t id;
    const char16_t* name;
    const char16_t* prototype;
    const char16_t* description; // null when registered without one
    std::int16_t min_args;
    std::int16_t max_args; // -1: any number
    std::uint32_t flags;
    fm::ExternalBody body;
};

struct StandInStep {
    char plugin_id[4];
    std::int16_t id;
    const char16_t* name;
    const char16_t* definition; // XML
    const char16_t* description;
    std::uint32_t flags;
    fm::ExternalBody body;
};

// What a failing call does: report a status, or raise an access violation inside the host.
enum class StandInFailure : std::int32_t { Allocation = 1, Unknown = 2, AccessViolation = 3 };

enum class StandInObject : std::int32_t {
    Text,
    Data,
    DataVect,
    BinaryData,
    DateTime,
    FixPt,
    QuadChar,
    Locale,
    CharacterStyle,
    Color,
    ExprEnv,
    Count_, // number of kinds
};

using StandInEvaluator = fm::Errcode (*)(const fm::ExprEnv* environment, const fm::Text* expression,
                                         fm::Data* result, void* context);

} // namespace vell::console

// Registrations, in the order of registration. Registering an ID that is registered already fails
// with error 956 and changes nothing; unregistering an unknown one fails with 959.
FM_CALL std::uint32_t StandIn_FunctionCount();
FM_CALL const vell::console::StandInFunction* StandIn_FunctionAt(std::uint32_t index);
FM_CALL std::uint32_t StandIn_StepCount();
FM_CALL const vell::console::StandInStep* StandIn_StepAt(std::uint32_t index);

// Makes the n-th registration from now (1 is the next, functions and steps alike) answer
// `error` without registering; 0 switches this off. The same for unregistrations.
FM_CALL void StandIn_FailRegistration(std::uint32_t n, vell::fm::Errcode error);
FM_CALL void StandIn_FailUnregistration(std::uint32_t n, vell::fm::Errcode error);

// Live objects of a kind, the name of the kind, and all kinds together. Objects owned by another
// object (the text inside a Data, the elements of a DataVect) are not counted.
FM_CALL std::int64_t StandIn_LiveObjects(vell::console::StandInObject kind);
FM_CALL const char* StandIn_ObjectName(vell::console::StandInObject kind);
FM_CALL std::int64_t StandIn_TotalLiveObjects();

// Makes the n-th FM_ call of this process from now (1 is the next) fail once; 0 switches it off.
// Delete calls are counted but never fail. Status is the only thing that a failing call writes; it
// returns null, zero or an errcode of 0.
FM_CALL void StandIn_FailCall(std::uint64_t n, vell::console::StandInFailure failure);
// FM_ calls since the process began or since the last reset.
FM_CALL std::uint64_t StandIn_CallCount();
// The failure set by StandIn_FailCall has been delivered (false again after the next FailCall), and
// the name of the FM_ function that it struck; null before that.
FM_CALL bool StandIn_FailureDelivered();
FM_CALL const char* StandIn_FailedCallName();

// Environments report these identifiers.
FM_CALL void StandIn_SetIdentifiers(std::uint64_t session_id, std::uint64_t file_id);
// What FM_ExprEnv_Evaluate calls; without one it answers 1225 (not supported).
FM_CALL void StandIn_SetEvaluator(vell::console::StandInEvaluator evaluator, void* context);

// Forgets registrations, pending failures and counts. Live objects stay counted.
FM_CALL void StandIn_Reset();
