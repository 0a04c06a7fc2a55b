// The system's dialog to select a file. Windows only; never to be shown on a server host.
#pragma once

#include "src/base/result.h"

#include <string>
#include <string_view>
#include <vector>

namespace vell::files {

struct FileDialog {
    std::u16string title;
    std::u16string initial_folder; // the system's choice when empty or not there
    std::u16string types;          // see file_patterns; all files when empty
    void* owner = nullptr;         // window handle
};

// The full path of an existing file. Cancelled when the user selects none.
Result<std::u16string> select_file(const FileDialog& dialog);

// Patterns for a list of file types that are separated by blanks, commas, semicolons or line ends:
// "txt", ".txt" and "*.txt" all give "*.txt"; joined by semicolons, as the dialog takes them.
std::u16string file_patterns(std::u16string_view types);

} // namespace vell::files
