// The system's dialogs to select files and folders.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::files {

enum class DialogKind : std::uint8_t { SelectFile, SelectFolder, SaveFile };

struct FileDialog {
    DialogKind kind = DialogKind::SelectFile;
    std::u16string title = {};
    std::u16string initial_folder = {}; // the system's choice when empty or not there
    std::u16string types = {};          // see file_patterns; all files when empty
    std::u16string name = {};           // proposed for the file to save
    bool several = false;               // files may be selected
    bool show_hidden = false;           // hidden items too, whatever the user's settings
    bool ask_before_replacing = true;
    void* owner = nullptr; // window handle
};

// The full paths that the user has selected, at least one: of files or a folder that exist, or of
// the file to save. Cancelled when the user selects none. Windows only; never to be called where
// no user can be asked.
Result<std::vector<std::u16string>> show_dialog(const FileDialog& dialog);

// Patterns for a list of file types that are separated by blanks, commas, semicolons or line ends:
// "txt", ".txt" and "*.txt" all give "*.txt"; joined by semicolons, as the dialog takes them.
std::u16string file_patterns(std::u16string_view types);

} // namespace vell::files
