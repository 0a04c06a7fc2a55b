// Entry points that older hosts lack. They are looked up by name in the loaded FMWrapper.dll, so
// that the plug-in loads without them; a null pointer means that this host has no such function.
#pragma once

#include "src/host/bridge/fm_api.h"

namespace vell::host {

struct LateEntryPoints {
    // API 51
    decltype(&FM_BinaryData_GetFNAMData) get_fnam_data = nullptr;
    decltype(&FM_BinaryData_AddFNAMData) add_fnam_data = nullptr;
    decltype(&FM_BinaryData_GetSIZEData) get_size_data = nullptr;
    decltype(&FM_BinaryData_AddSIZEData) add_size_data = nullptr;
    // API 56
    decltype(&FM_ExprEnv_RegisterExternalFunctionEx) register_function_ex = nullptr;
    decltype(&FM_ExprEnv_SessionID) session_id = nullptr;
    decltype(&FM_ExprEnv_FileID) file_id = nullptr;
    // API 57
    decltype(&FM_ExprEnv_RegisterScriptStep) register_step = nullptr;
    decltype(&FM_ExprEnv_UnRegisterScriptStep) unregister_step = nullptr;
    // API 59
    decltype(&FM_FixPt_AssignInt64) assign_int64 = nullptr;
};

// Looks up what a host of this API version has. Called once, at start-up.
void find_late_entry_points(std::int16_t api_version);
const LateEntryPoints& late_entry_points();

} // namespace vell::host
