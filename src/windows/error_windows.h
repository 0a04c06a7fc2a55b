// Windows that the system itself shows. Windows only.
#pragma once

#include <windows.h>

namespace vell {

// For as long as it lives, a drive without a medium is an error of the thread's call instead of a
// window that asks the user to insert one.
class NoErrorWindows {
  public:
    NoErrorWindows() {
        SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX,
                           &previous_);
    }
    NoErrorWindows(const NoErrorWindows&) = delete;
    NoErrorWindows& operator=(const NoErrorWindows&) = delete;
    ~NoErrorWindows() { SetThreadErrorMode(previous_, nullptr); }

  private:
    DWORD previous_ = 0;
};

} // namespace vell
