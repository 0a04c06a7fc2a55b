// What the user sees: programs, the file manager, the windows of the host.
#pragma once

#include "src/system/file_access.h"
#include "src/system/file_dialog.h"
#include "src/system/window_state.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::files {

struct LaunchRequest {
    std::u16string target;         // a full path, the name of a program, or a web address
    std::u16string parameters;     // for a program
    std::u16string working_folder; // the current one when empty
    std::u16string verb;           // such as "print"; what a double click does when empty
    WindowState window = WindowState::Normal;
    void* owner = nullptr; // window handle
};

// What the shell's file operation answered.
struct ShellOutcome {
    ErrorCode code = ErrorCode::Ok; // or one of the shell's own numbers
    bool aborted = false;           // the user ended it
};

enum class ShellMessages : std::uint8_t { Shown, Suppressed };

class Desktop {
  public:
    virtual ~Desktop() = default;

    // Whether anybody can see what this process shows.
    virtual bool is_visible() = 0;
    // The first window on the screen whose class begins with a name, letters A to Z compared
    // without case; for no name, or where there is none, the window in front. Null when there is
    // neither.
    virtual void* main_window(std::u16string_view class_name) = 0;

    // Begins to open something, without a message of the system's where that fails: NotFound,
    // Cancelled, or the system's code, such as 1155 where no program is registered.
    virtual Result<void> launch(const LaunchRequest& request) = 0;
    // Shows an item, selected, in the window of the folder that holds it.
    virtual Result<void> reveal(const std::u16string& path) = 0;
    // Brings a window of this process to the front: the one given, or the first that there is.
    // NoFrontWindow without one, Busy when the system does not allow it.
    virtual Result<void> bring_to_front(void* window) = 0;

    // The full paths that the user has selected, at least one: of files or a folder that exist, or
    // of the file to save. Cancelled when the user selects none. Never to be called where no user
    // can be asked.
    virtual Result<std::vector<std::u16string>> show(const FileDialog& dialog) = 0;
    // Beeps and asks with OK and Cancel; true for OK.
    virtual bool confirm(void* owner, const std::u16string& question) = 0;
    // Shows a text until the user has read it.
    virtual void inform(void* owner, const std::u16string& title, const std::u16string& text) = 0;
    // Codes of the user's languages, such as "en-GB", the preferred one first.
    virtual Result<std::vector<std::u16string>> preferred_languages() = 0;

    // Whether this process has the shell's file operation, which the next two are made of. Full
    // paths are given to them.
    virtual bool has_shell_operations() = 0;
    virtual ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                                    ShellMessages messages) = 0;
    virtual ShellOutcome shell_delete(const NativePath& folder, void* owner,
                                      ShellMessages messages) = 0;
};

} // namespace vell::files
