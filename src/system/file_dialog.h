// The system's dialogs to select files and folders.
#pragma once

#include <cstdint>
#include <string>

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

} // namespace vell::files
