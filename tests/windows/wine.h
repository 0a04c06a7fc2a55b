// Whether the system is Wine, where some of what Windows has is missing. Windows only.
#pragma once

#include <windows.h>

namespace vell::test {

inline bool runs_in_wine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace vell::test
