#include "src/windows/process/large_stack.h"

#include "src/windows/handle.h"
#include "src/windows/process/guarded_call.h"

#include <exception>
#include <new>

namespace vell::windows {
namespace {

struct FiberKind {
    using Type = void*;
    static void* empty() { return nullptr; }
    static void close(void* fiber) { DeleteFiber(fiber); }
};
using UniqueFiber = UniqueResource<FiberKind>;

// The calling thread as a fiber, since only fibers can switch to others. A host that has made it
// one keeps it, and its data.
class CallingFiber {
  public:
    CallingFiber() : converted_(!IsThreadAFiber()) {
        if (converted_ && !ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH))
            throw std::bad_alloc();
    }
    CallingFiber(const CallingFiber&) = delete;
    CallingFiber& operator=(const CallingFiber&) = delete;
    ~CallingFiber() {
        if (converted_)
            ConvertFiberToThread();
    }

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds" // it reads the thread's block by its offset alone
    void* get() const {
        return GetCurrentFiber();
    }
#pragma GCC diagnostic pop

  private:
    bool converted_;
};

struct Task {
    const std::function<void()>& work;
    void* caller;
    std::exception_ptr exception;
};

void run_task(void* argument) {
    auto& task = *static_cast<Task*>(argument);
    try {
        task.work();
    } catch (...) {
        task.exception = std::current_exception();
    }
}

// The guard around the dispatcher stands on the caller's stack, out of reach from this one.
void WINAPI fiber_start(void* argument) {
    guarded_call(run_task, argument);
    SwitchToFiber(static_cast<Task*>(argument)->caller); // for good: returning would end the thread
}

} // namespace

void run_on_large_stack(const std::function<void()>& work) {
    constexpr SIZE_T reserved = 64 << 20; // address space; memory comes as it is needed
    constexpr SIZE_T committed = 64 << 10;
    const CallingFiber caller;
    Task task{work, caller.get(), nullptr};
    const UniqueFiber fiber(
        CreateFiberEx(committed, reserved, FIBER_FLAG_FLOAT_SWITCH, fiber_start, &task));
    if (!fiber)
        throw std::bad_alloc();
    SwitchToFiber(fiber.get());
    if (task.exception)
        std::rethrow_exception(task.exception);
}

} // namespace vell::windows
