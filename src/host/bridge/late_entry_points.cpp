#include "src/host/bridge/late_entry_points.h"

#include "src/windows/process/library.h"

namespace vell::host {
namespace {

LateEntryPoints found;

template <typename Function>
void find(const char* name, Function& function) {
    function = reinterpret_cast<Function>(windows::function_of_library(L"FMWrapper.dll", name));
}

} // namespace

void find_late_entry_points(std::int16_t api_version) {
    found = {};
    if (api_version >= 51) {
        find("FM_BinaryData_GetFNAMData", found.get_fnam_data);
        find("FM_BinaryData_AddFNAMData", found.add_fnam_data);
        find("FM_BinaryData_GetSIZEData", found.get_size_data);
        find("FM_BinaryData_AddSIZEData", found.add_size_data);
    }
    if (api_version >= 56) {
        find("FM_ExprEnv_RegisterExternalFunctionEx", found.register_function_ex);
        find("FM_ExprEnv_SessionID", found.session_id);
        find("FM_ExprEnv_FileID", found.file_id);
    }
    if (api_version >= 57) {
        find("FM_ExprEnv_RegisterScriptStep", found.register_step);
        find("FM_ExprEnv_UnRegisterScriptStep", found.unregister_step);
    }
    if (api_version >= 59)
        find("FM_FixPt_AssignInt64", found.assign_int64);
}

const LateEntryPoints& late_entry_points() {
    return found;
}

} // namespace vell::host
