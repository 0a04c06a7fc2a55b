// Shell links ("aliases", "shortcuts") as the system makes and reads them.
#pragma once

#include "src/base/result.h"
#include "src/system/window_state.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::files {

struct ShellLink {
    std::u16string target = {};    // empty for what is no file, such as a printer
    std::u16string arguments = {}; // for a program
    std::u16string description = {};
    std::u16string working_folder = {};
    std::u16string icon = {}; // a file that holds icons
    std::int32_t icon_index = 0;
    WindowState window = WindowState::Normal;
};

class ShellLinks {
  public:
    virtual ~ShellLinks() = default;

    // A link file's bytes.
    virtual Result<std::string> make(const ShellLink& link) = 0;
    virtual Result<ShellLink> read(std::string_view bytes) = 0;
    // Where the system's records say that the target has gone, found without a window and without a
    // search of disks; empty when they know of nothing.
    virtual std::u16string track(std::string_view bytes) = 0;
};

} // namespace vell::files
