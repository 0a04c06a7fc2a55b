// What the functions that change the tree of files and folders need of the system, beside the file
// access layer.
#pragma once

#include "src/system/file_access.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vell::files {

// What the shell's file operation answered.
struct ShellOutcome {
    std::int32_t code = 0; // a Windows error or one of the shell's own numbers; 0: none
    bool aborted = false;  // the user ended it
};

enum class ShellMessages : std::uint8_t { Shown, Suppressed };

// Something that stands in a folder, at any depth.
struct ItemBelow {
    NativePath path;
    ItemKind kind;
    bool is_link; // to a folder: a junction, a symbolic link, a mounted volume
};
using VisitItem = std::function<Result<void>(const ItemBelow&)>;

class TreeSystem {
  public:
    virtual ~TreeSystem() = default;

    virtual FileSystem& files() = 0;

    // The path from its root on, as the system reads it: without "." and "..", names separated by
    // "\". BadName for a name that only "\\?\" paths can express.
    virtual Result<NativePath> full_path(const NativePath& path) = 0;
    // Whether two names or paths differ in letter case at most, by the file system's own rule.
    virtual bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) = 0;
    virtual bool on_same_volume(const NativePath& a, const NativePath& b) = 0;
    // Milliseconds since the system was started.
    virtual std::uint32_t tick_count() = 0;

    // Makes one folder. NotFound or FolderNotFound when its parent is missing.
    virtual Result<void> create_folder(const NativePath& path) = 0;
    // Removes an empty folder, or a link to a folder; Busy when it is not empty.
    virtual Result<void> remove_folder(const NativePath& path) = 0;
    // Moves or renames; never replaces anything: AlreadyExists.
    virtual Result<void> move(const NativePath& source, const NativePath& target) = 0;

    // Whether the folder itself is a link (junction, symbolic link, mounted volume).
    virtual bool is_link(const NativePath& folder) = 0;
    // Calls `visit` with everything below a folder, a folder before what it holds, until it fails.
    // No link is followed.
    virtual Result<void> for_each_below(const NativePath& folder, const VisitItem& visit) = 0;

    // Whether this process has the shell's file operation, which the next two are made of. Full
    // paths are given to them.
    virtual bool has_shell_operations() = 0;
    virtual ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                                    ShellMessages messages) = 0;
    virtual ShellOutcome shell_delete(const NativePath& folder, void* owner,
                                      ShellMessages messages) = 0;

    // Beeps and asks with OK and Cancel; true for OK.
    virtual bool confirm(void* owner, const std::u16string& question) = 0;
};

// The tree of the operating system.
TreeSystem& system_tree();

} // namespace vell::files
