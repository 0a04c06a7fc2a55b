// The prompt.
#pragma once

#include "console/host/reference_pages.h"
#include "console/host/session.h"

#include <functional>

namespace vell::console {

// Reads commands and statements from the console until its end; each statement goes to `run`.
void run_prompt(const PluginHost& host, const ReferencePages& pages, Session& session,
                const std::function<void(std::u16string_view)>& run);

} // namespace vell::console
