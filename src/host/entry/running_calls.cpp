#include "src/host/entry/running_calls.h"

#include "src/windows/handle.h"

#include <mutex>
#include <utility>

namespace vell::host {
namespace {

std::mutex mutex;
int running = 0;
UniqueModule kept; // a reference on our own library

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

} // namespace

RunningCall::RunningCall() {
    const std::lock_guard lock(mutex);
    ++running;
}

RunningCall::~RunningCall() {
    UniqueModule library;
    {
        const std::lock_guard lock(mutex);
        if (--running == 0)
            library = std::move(kept);
    }
    if (library)
        release_later(std::move(library));
}

void outlive_running_calls() {
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&outlive_running_calls), &library);
    UniqueModule reference(library); // what is not kept goes at once: the host has its own yet
    const std::lock_guard lock(mutex);
    if (running > 0 && !kept)
        kept = std::move(reference);
}

} // namespace vell::host
