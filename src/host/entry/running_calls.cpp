#include "src/host/entry/running_calls.h"

#include "src/windows/process/library.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace vell::host {
namespace {

// Each call counts itself, without a lock. Who counts down to none looks whether the host has let
// go, and who lets go says so before looking at the count: one of the two sees the other.
std::atomic<int> running = 0;
std::atomic<bool> is_leaving = false; // the reference below is there, or about to be
std::mutex mutex;                     // of the reference, and of changes to what is said about it
UniqueModule kept;                    // a reference on our own library

// Gives a reference back when this thread has long left the library, by a call in which the system
// returns to its own code. Nobody waits, so nothing can wait for itself: not the thread that
// unloads, which may run the call, and not one that holds the loader's lock.
void release_later(UniqueModule library) {
    constexpr DWORD delay_ms = 2'000;
    HANDLE timer = nullptr; // the system's, to the end of the process
    const auto free_library =
        reinterpret_cast<WAITORTIMERCALLBACK>(reinterpret_cast<void*>(&FreeLibrary));
    CreateTimerQueueTimer(&timer, nullptr, free_library, library.get(), delay_ms, 0,
                          WT_EXECUTEONLYONCE);
    library.release(); // without a timer it stays
}

UniqueModule take_reference() {
    const std::lock_guard lock(mutex);
    if (running > 0)
        return {}; // a call that began meanwhile takes it
    is_leaving = false;
    return std::move(kept);
}

} // namespace

RunningCall::RunningCall() {
    ++running;
}

RunningCall::~RunningCall() {
    if (--running > 0 || !is_leaving)
        return;
    if (UniqueModule library = take_reference())
        release_later(std::move(library));
}

void outlive_running_calls() {
    // What is not kept goes at once: the host has its own yet.
    UniqueModule reference =
        windows::reference_on_library(reinterpret_cast<const void*>(&outlive_running_calls));
    const std::lock_guard lock(mutex);
    is_leaving = true;
    if (running > 0 && !kept)
        kept = std::move(reference);
    is_leaving = static_cast<bool>(kept);
}

} // namespace vell::host
