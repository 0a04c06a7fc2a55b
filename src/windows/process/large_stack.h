// Work that recurses deeper than the threads of a host have stack for. Windows only.
#pragma once

#include <functional>

namespace vell::windows {

// Runs `work` on 64 MiB of stack, on the calling thread: a fiber of its own that ends before the
// function returns, also where the thread is a fiber already. What it throws is thrown to the
// caller; a system exception in it is a crash as on the host's stack. Throws std::bad_alloc when
// there is no room for the stack.
void run_on_large_stack(const std::function<void()>& work);

} // namespace vell::windows
