// The record through which the host drives a plug-in's single entry point. It is packed: several
// fields stand at odd offsets.
#pragma once

#include "src/host/bridge/fm_api.h"

#include <cstddef>
#include <cstdint>

namespace vell::host {

// How a started script treats one that is running.
enum class ScriptControl : std::uint8_t { Halt = 0, Exit = 1, Resume = 2, Pause = 3 };

struct CallRecord;
using EntryPoint = void (*)(CallRecord*);
using StartScript = fm::Errcode (*)(const fm::Text* file_name, const fm::Text* script_name,
                                    std::uint8_t control, const fm::Data* parameter);
using CurrentEnvironment = fm::Errcode (*)(fm::ExprEnv* environment);

#pragma pack(push, 1)
struct CallRecord {
    std::int16_t api_version;
    std::int16_t unused_id; // -1
    EntryPoint entry_point;
    std::uint8_t unused_flag; // 0
    std::uint8_t message;     // a plugin::Message
    std::uint8_t unsafe;      // nonzero when not on the host's main thread
    std::uint8_t parameter1;
    fm::PtrType parameter2;
    fm::PtrType parameter3;
    fm::PtrType instance; // module handle of the plug-in
    fm::PtrType result;
    fm::PtrType unused;
    StartScript start_script;
    CurrentEnvironment current_environment;
};
#pragma pack(pop)

static_assert(offsetof(CallRecord, api_version) == 0);
static_assert(offsetof(CallRecord, unused_id) == 2);
static_assert(offsetof(CallRecord, entry_point) == 4);
static_assert(offsetof(CallRecord, unused_flag) == 12);
static_assert(offsetof(CallRecord, message) == 13);
static_assert(offsetof(CallRecord, unsafe) == 14);
static_assert(offsetof(CallRecord, parameter1) == 15);
static_assert(offsetof(CallRecord, parameter2) == 16);
static_assert(offsetof(CallRecord, parameter3) == 24);
static_assert(offsetof(CallRecord, instance) == 32);
static_assert(offsetof(CallRecord, result) == 40);
static_assert(offsetof(CallRecord, unused) == 48);
static_assert(offsetof(CallRecord, start_script) == 56);
static_assert(offsetof(CallRecord, current_environment) == 64);
static_assert(sizeof(CallRecord) == 72);

} // namespace vell::host
