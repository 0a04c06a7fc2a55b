// Work that recurses deeper than the host's threads have stack for.
#pragma once

#include <functional>

namespace vell::host {

// Runs `work` on a thread of its own with 64 MiB of stack and waits for its end. What it throws is
// thrown to the caller; a system exception in it is a crash as on the host's threads. Throws
// std::bad_alloc when there is no room for the thread.
void run_on_large_stack(const std::function<void()>& work);

} // namespace vell::host
