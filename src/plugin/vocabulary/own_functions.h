// The functions that are about the plug-in itself, and those over what it keeps between calls.
#pragma once

#include "src/params/call.h"

#include <cstdint>

namespace vell::plugin {

class Plugin;

// Values of the "Action" list of the step that mirrors VlFile_Control.
inline constexpr std::int32_t control_disable_all = 1;
inline constexpr std::int32_t control_enable_all = 2;
inline constexpr std::int32_t control_current_status = 3;

// VlFile_Version, VlFile_Version( switches ): "Vell File Plug-In 14.0"; with "-getversionnumber"
// the number 14, with "-getversionstring" the text "14.0", with "-GetLibraries" the libraries inside,
// one a line as "Name 1.2.3".
Result<void> version(params::Call& call, Plugin& plugin);

// VlFile_VersionAutoUpdate: "14000000".
Result<void> version_auto_update(params::Call& call, Plugin& plugin);

// VlFile_Control( switches ; password ): exactly one of "DisableAllFunctions",
// "EnableAllFunctions" (which needs the password of the disabling) and "CurrentEnabledStatus" (1
// when enabled, else 0); or what is to become of the logs: "-AddToDebugLog=true" or "=false" begins
// or ends the debug log, "-GetAndClearDebugLog" gives it, "-LogCalls=false" or "=true" leaves out
// or brings back the lines that server hosts log for each call. ControlRefused for anything else,
// for both kinds together and for a wrong password, AlreadyDisabled, BadParameter for an empty
// password to disable with.
Result<void> control(params::Call& call, Plugin& plugin);

// See dragdrop::DragAndDrop.
Result<void> drag_and_drop(params::Call& call, Plugin& plugin);
Result<void> stop_drop_handlers(params::Call& call, Plugin& plugin);

} // namespace vell::plugin
