// What the standard library calls where an index lies beyond its container, in the plug-in and in
// the libraries in it: a crash that is reported as any other, where its own way ends the host
// without one.
#include <windows.h>

namespace std {

[[noreturn]] void __glibcxx_assert_fail(const char* /*file*/, int /*line*/,
                                        const char* /*function*/,
                                        const char* /*condition*/) noexcept {
    RaiseException(static_cast<DWORD>(EXCEPTION_ARRAY_BOUNDS_EXCEEDED), EXCEPTION_NONCONTINUABLE, 0,
                   nullptr);
    __builtin_trap();
}

} // namespace std
