// The host's main window: owner of dialogs and root of the drop targets.
#pragma once

#include <cstdint>
#include <string_view>

namespace vell::plugin {

// The class name that the main window's begins with, by API version; empty where the foreground
// window serves.
constexpr std::u16string_view main_window_class(std::int16_t api_version) {
    if (api_version < 57)
        return {};
    switch (api_version) {
    case 57:
        return u"FMPRO16.0APP";
    case 59:
        return u"FMPRO17.0APP";
    case 60:
        return u"FMPRO18.0APP";
    case 62:
        return u"FMPRO19.0APP";
    default:
        return u"FMPROxx.0APP";
    }
}

} // namespace vell::plugin
