// Owners of the shell's names of items. Windows only.
#pragma once

#include "src/windows/handle.h"

#include <shlobj.h>

namespace vell::windows {

struct ItemListKind {
    using Type = PIDLIST_ABSOLUTE;
    static PIDLIST_ABSOLUTE empty() { return nullptr; }
    static void close(PIDLIST_ABSOLUTE list) { ILFree(list); }
};
using UniqueItemList = UniqueResource<ItemListKind>;

} // namespace vell::windows
