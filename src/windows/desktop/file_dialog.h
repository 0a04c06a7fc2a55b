// The system's dialogs to select files and folders; see Desktop. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/system/file_dialog.h"

#include <string>
#include <vector>

namespace vell::windows {

Result<std::vector<std::u16string>> show_dialog(const files::FileDialog& dialog);

} // namespace vell::windows
