// The host's main window: owner of dialogs and root of the drop targets.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

namespace vell::host {

// The class name that the main window's begins with, by API version; empty where the foreground
// window serves.
constexpr std::wstring_view main_window_class(std::int16_t api_version) {
    if (api_version < 57)
        return {};
    switch (api_version) {
    case 57:
        return L"FMPRO16.0APP";
    case 59:
        return L"FMPRO17.0APP";
    case 60:
        return L"FMPRO18.0APP";
    case 62:
        return L"FMPRO19.0APP";
    default:
        return L"FMPROxx.0APP";
    }
}

// Letters compare without case, as the system compares class names.
bool is_main_window_class(std::wstring_view class_name, std::wstring_view wanted);

// The first top-level window of the class, otherwise the foreground window; null when there is
// neither.
HWND main_window();

} // namespace vell::host
