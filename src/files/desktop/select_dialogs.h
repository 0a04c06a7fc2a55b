// Paths of the user's choice.
#pragma once

#include "src/params/call.h"

#include <string>

namespace vell::files {

// The folder where a dialog starts, by a parameter; empty for the system's choice.
Result<std::u16string> initial_folder(params::Call& call, std::size_t index);

// All of them: DialogNotAllowed without a user, Cancelled when the user cancels. A prompt is the
// dialog's title. An initial folder that is not there is left to the system. "-ShowInvisibles"
// shows hidden items.

// VlFile_SelectFileDialog( switches ; prompt ; { initialFolder } ): the path of a file, or with
// "-AllowMultipleFiles" of several, one a line. The types of VlFile_SetDefaultType, or those of
// "-Types=", are offered as a filter.
Result<void> select_file_dialog(params::Call& call, System& system);

// VlFile_SelectFolderDialog( switches ; prompt ; { initialFolder } ): the path of a folder, which
// ends with "\".
Result<void> select_folder_dialog(params::Call& call, System& system);

// VlFile_SaveFileDialog( switches ; prompt ; { defaultName ; { initialFolder } } ): the path where
// the user wants a file; nothing is made there. The system asks before it gives the path of a file
// that exists, unless "-NoOverwritePrompt" is given. BadName for a default name that no file can
// have.
Result<void> save_file_dialog(params::Call& call, System& system);

} // namespace vell::files
