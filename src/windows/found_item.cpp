#include "src/system/found_item.h"
#include "src/system/tree_system.h"
#include "src/windows/handle.h"
#include "src/windows/path.h"

namespace vell::files {

Result<FoundItem> find_item(const NativePath& path) {
    const DWORD attributes = GetFileAttributesW(win32_path(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Failure{last_error()};
    FoundItem found;
    found.path = VELL_TRY(system_tree().full_path(path)).wide;
    found.is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return found;
}

} // namespace vell::files
