#include "src/host/lifecycle/main_window.h"

#include "src/base/ascii.h"
#include "src/host/lifecycle/plugin_state.h"

#include <array>

namespace vell::host {
namespace {

struct Search {
    std::wstring_view wanted;
    HWND found = nullptr;
};

BOOL CALLBACK check_window(HWND window, LPARAM argument) {
    auto& search = *reinterpret_cast<Search*>(argument);
    std::array<wchar_t, 1000> name;
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (!is_main_window_class({name.data(), static_cast<std::size_t>(length)}, search.wanted))
        return TRUE;
    search.found = window;
    return FALSE;
}

} // namespace

bool is_main_window_class(std::wstring_view class_name, std::wstring_view wanted) {
    return starts_ignoring_case(class_name, wanted);
}

HWND main_window() {
    Search search{main_window_class(plugin_state().api_version)};
    if (!search.wanted.empty())
        EnumWindows(check_window, reinterpret_cast<LPARAM>(&search));
    return search.found ? search.found : GetForegroundWindow();
}

} // namespace vell::host
