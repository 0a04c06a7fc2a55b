#include "src/host/large_stack.h"

#include "src/base/win32_handle.h"
#include "src/host/guarded_call.h"

#include <exception>
#include <new>

namespace vell::host {
namespace {

struct Task {
    const std::function<void()>& work;
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

DWORD WINAPI thread_start(void* argument) {
    guarded_call(run_task, argument);
    return 0;
}

} // namespace

void run_on_large_stack(const std::function<void()>& work) {
    constexpr SIZE_T stack_size = 64 << 20; // address space; memory comes as it is needed
    Task task{work, nullptr};
    const UniqueHandle thread(CreateThread(nullptr, stack_size, thread_start, &task,
                                           STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (!thread)
        throw std::bad_alloc();
    WaitForSingleObject(thread.get(), INFINITE);
    if (task.exception)
        std::rethrow_exception(task.exception);
}

} // namespace vell::host
