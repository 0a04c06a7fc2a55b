// The host's answers to Get( … ).
#pragma once

#include "console/calc/seams.h"
#include "console/host/plugin_host.h"

namespace vell::console {

Value host_answer(GetItem item, const PluginHost& host);

} // namespace vell::console
