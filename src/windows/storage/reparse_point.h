// Items that lead somewhere else. Windows only.
#pragma once

#include <windows.h>

namespace vell::windows {

// Whether an item is a symbolic link, a junction or a mounted volume. Other reparse points, such as
// files that a cloud service keeps, stand for themselves.
inline bool leads_elsewhere(const WIN32_FIND_DATAW& found) {
    if (!(found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return false;
    // Wine gives no tag to a folder that is a symbolic link of the system below it.
    const DWORD tag = found.dwReserved0;
    return tag == 0 || IsReparseTagNameSurrogate(tag);
}

inline bool leads_elsewhere(const FILE_ATTRIBUTE_TAG_INFO& item) {
    return (item.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(item.ReparseTag);
}

} // namespace vell::windows
