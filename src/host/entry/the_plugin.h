// The plug-in of this process, over its host and Windows.
#pragma once

#include "src/host/entry/script_starter.h"
#include "src/plugin/plugin.h"

namespace vell::host {

plugin::Plugin& the_plugin();
ScriptStarter& script_starter();

} // namespace vell::host
