// Full paths of items, as the functions that hand paths on to other programs need them.
#pragma once

#include "src/system/system.h"

#include <string>

namespace vell::files {

// The path from its root on, as the system reads it: without "." and "..", names separated by "\",
// and without a "\\?\" prefix. BadName for a name that only paths with that prefix can express.
Result<NativePath> full_path(TreeSystem& tree, const NativePath& path);

// An item that exists, by its full path.
struct FoundItem {
    std::u16string path;
    bool is_folder = false;
};

// NotFound or FolderNotFound, and the system's code for what it does not tell.
Result<FoundItem> find_item(System& system, const NativePath& path);

// The shell, unlike the file system, takes no longer paths.
inline constexpr std::size_t longest_shell_path = 259;

} // namespace vell::files
