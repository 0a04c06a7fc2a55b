// An item that exists, by its full path.
#pragma once

#include "src/system/file_access.h"

#include <string>

namespace vell::files {

// The shell, unlike the file system, takes no longer paths.
inline constexpr std::size_t longest_shell_path = 259;

struct FoundItem {
    std::u16string path; // from its root, names separated by "\", without a "\\?\" prefix
    bool is_folder = false;
};

// NotFound or FolderNotFound, and the system's code for what it does not tell. Windows only.
Result<FoundItem> find_item(const NativePath& path);

} // namespace vell::files
