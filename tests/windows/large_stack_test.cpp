// Work on a stack of its own, on the calling thread.
#include "src/windows/process/large_stack.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>

namespace vell::test {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds" // it reads the thread's block by its offset alone
void* fiber_data() {
    return GetFiberData();
}
#pragma GCC diagnostic pop

TEST(LargeStack, IsOfTheCallingThreadWhichKeepsItsOwnFiber) {
    const DWORD thread = GetCurrentThreadId();
    int data = 0;
    ASSERT_TRUE(ConvertThreadToFiberEx(&data, FIBER_FLAG_FLOAT_SWITCH));
    int done = 0;
    try {
        windows::run_on_large_stack([&] {
            windows::run_on_large_stack([&] { done += GetCurrentThreadId() == thread; });
            done += GetCurrentThreadId() == thread;
            throw std::runtime_error("what happened");
        });
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "what happened");
        ++done;
    }
    EXPECT_EQ(done, 3);
    EXPECT_EQ(fiber_data(), &data);
    EXPECT_TRUE(ConvertFiberToThread());

    windows::run_on_large_stack([&] { ++done; });
    EXPECT_EQ(done, 4);
    EXPECT_FALSE(IsThreadAFiber()); // what was made one is none any more
}

} // namespace
} // namespace vell::test
