// Opening files, showing them to the user, and the host's own window.
#pragma once

#include "src/params/call.h"

#include <optional>
#include <string>
#include <string_view>

namespace vell::files {

// All of them: DialogNotAllowed without a user. PathTooLong for what the shell cannot take.

// VlFile_Launch( switches ; filePath ; { params } ): opens a file with the program registered for
// it, starts a program with parameters, opens a folder, or a web address. "-Open", "-Edit" and
// "-Print" name what is to be done; "-Hide", "-Minimize" and "-Maximize" ask for a state of the
// window. The file's folder is the working folder. A bare name that is no file here is looked for
// where the system keeps programs.
Result<void> launch(params::Call& call, System& system);

// The step "Open Folder": opens a folder in the file manager. FolderNotFound; NotAFolder for a
// file.
Result<void> open_folder(params::Call& call, System& system);

// VlFile_Reveal( switches ; filePath ): shows a file or folder, selected, in the window of the
// folder that holds it. A folder is opened itself with "-OpenFolder".
Result<void> reveal(params::Call& call, System& system);

// VlFile_BringToFront: the host's main window comes to the front, from the task bar too.
Result<void> bring_to_front(params::Call& call, System& system);

// A web address that VlFile_Launch opens: http, https, ftp, mailto, tel, fmp and fmp with a
// version's number, followed by ":". Blanks and quotes are percent-encoded, as programs that are
// handed an address need it. nullopt for all other texts, those with control characters included.
std::optional<std::u16string> web_address(std::u16string_view text);

} // namespace vell::files
