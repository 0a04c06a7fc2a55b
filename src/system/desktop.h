// What the user sees: programs, the file manager, the windows of the host.
#pragma once

#include "src/system/found_item.h"
#include "src/system/window_state.h"

#include <string>

namespace vell::files {

struct LaunchRequest {
    std::u16string target;         // a full path, the name of a program, or a web address
    std::u16string parameters;     // for a program
    std::u16string working_folder; // the current one when empty
    std::u16string verb;           // such as "print"; what a double click does when empty
    WindowState window = WindowState::Normal;
    void* owner = nullptr; // window handle
};

class Desktop {
  public:
    virtual ~Desktop() = default;

    // See find_item.
    virtual Result<FoundItem> find(const NativePath& path) = 0;
    // Begins to open something, without a message of the system's where that fails: NotFound,
    // Cancelled, or the system's code, such as 1155 where no program is registered.
    virtual Result<void> launch(const LaunchRequest& request) = 0;
    // Shows an item, selected, in the window of the folder that holds it.
    virtual Result<void> reveal(const std::u16string& path) = 0;
    // Brings a window of this process to the front: the one given, or the first that there is.
    // NoFrontWindow without one, Busy when the system does not allow it.
    virtual Result<void> bring_to_front(void* window) = 0;
};

// The desktop of the user who runs the host.
Desktop& system_desktop();

} // namespace vell::files
