// Stands in for windows_tests.exe in the test of the self-test: suites that crash, hang and fail.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

TEST(Crashing, Before) {}
TEST(Crashing, Ends) {
    std::puts("the last line");
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0xC0000005);
}
TEST(Crashing, After) {}

TEST(Hanging, Waits) {
    Sleep(INFINITE);
}

TEST(Failing, TellsPaths) {
    const std::string profile = std::getenv("USERPROFILE");
    FAIL() << profile << " and "
           << testing::PrintToString(std::u16string(profile.begin(), profile.end()) + u"\\a");
}

} // namespace
