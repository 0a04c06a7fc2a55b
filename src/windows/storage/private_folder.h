// Folders in places that others may use, too. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/windows/handle.h"

#include <string>

namespace vell::windows {

// The user whom this process works for, as text ("S-1-5-21-…").
Result<std::wstring> user_identifier();

// A folder of that user alone, made where it is missing: nobody else has rights in it. Busy for one
// that somebody else has made, or that leads elsewhere. As long as the handle is kept, it can be
// neither renamed nor removed.
Result<UniqueFile> open_private_folder(const std::wstring& path);

} // namespace vell::windows
