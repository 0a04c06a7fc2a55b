#include "src/host/bridge/late_entry_points.h"

#include <windows.h>

namespace vell::host {
namespace {

LateEntryPoints found;

template <typename Function>
void find(HMODULE module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

} // namespace

void find_late_entry_points(std::int16_t api_version) {
    found = {};
    const HMODULE host = GetModuleHandleW(L"FMWrapper.dll");
    if (!host)
        return;
    if (api_version >= 51) {
        find(host, "FM_BinaryData_GetFNAMData", found.get_fnam_data);
        find(host, "FM_BinaryData_AddFNAMData", found.add_fnam_data);
        find(host, "FM_BinaryData_GetSIZEData", found.get_size_data);
        find(host, "FM_BinaryData_AddSIZEData", found.add_size_data);
    }
    if (api_version >= 56)
        find(host, "FM_ExprEnv_RegisterExternalFunctionEx", found.register_function_ex);
    if (api_version >= 57) {
        find(host, "FM_ExprEnv_RegisterScriptStep", found.register_step);
        find(host, "FM_ExprEnv_UnRegisterScriptStep", found.unregister_step);
    }
    if (api_version >= 59)
        find(host, "FM_FixPt_AssignInt64", found.assign_int64);
}

const LateEntryPoints& late_entry_points() {
    return found;
}

} // namespace vell::host
