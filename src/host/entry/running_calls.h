// Calls under way, on whatever thread, and the plug-in's library, which is not to go before them.
#pragma once

namespace vell::host {

// Stands for one call as long as it lives.
class RunningCall {
  public:
    RunningCall();
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
    ~RunningCall();
};

// The host may unload the plug-in from now on. While calls run, this thread's among them, the
// library stays in memory, and goes some time after the last of them.
void outlive_running_calls();

} // namespace vell::host
