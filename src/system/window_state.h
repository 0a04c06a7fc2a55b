// How a program's first window is to appear.
#pragma once

#include "src/params/switches.h"

#include <cstdint>

namespace vell::files {

enum class WindowState : std::uint8_t { Normal, Hidden, Minimized, Maximized };

// "-Hide", "-Minimize", "-Maximize"; the first of them counts.
inline WindowState window_state_of(const params::SwitchSet& switches) {
    if (switches.has("-Hide"))
        return WindowState::Hidden;
    if (switches.has("-Minimize"))
        return WindowState::Minimized;
    return switches.has("-Maximize") ? WindowState::Maximized : WindowState::Normal;
}

} // namespace vell::files
