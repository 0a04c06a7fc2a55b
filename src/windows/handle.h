// Owners of Windows resources. Windows only.
#pragma once

#include "src/windows/error.h"

#include <windows.h>

#include <utility>

namespace vell {

// The calling thread's last error as a result code; read it before anything else can change it.
inline ErrorCode last_error() {
    return error_from_win32(static_cast<std::int32_t>(GetLastError()));
}

// How an item is opened that others may go on using in every way.
constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Owns a value of `Kind::Type`, which `Kind::close` releases; `Kind::empty` owns nothing.
template <typename Kind>
class UniqueResource {
  public:
    using T = typename Kind::Type;

    UniqueResource() = default;
    explicit UniqueResource(T value) : value_(value) {}
    UniqueResource(UniqueResource&& other) noexcept : value_(other.release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept {
        if (this != &other) {
            reset();
            value_ = other.release();
        }
        return *this;
    }
    ~UniqueResource() { reset(); }

    explicit operator bool() const { return value_ != Kind::empty(); }
    T get() const { return value_; }
    T release() { return std::exchange(value_, Kind::empty()); }
    void reset() {
        if (*this)
            Kind::close(release());
    }
    // Releases it now, and tells what the system says of that.
    auto close() { return Kind::close(release()); }

  private:
    T value_ = Kind::empty();
};

struct FileKind {
    using Type = HANDLE;
    static HANDLE empty() { return INVALID_HANDLE_VALUE; }
    static bool close(HANDLE handle) { return CloseHandle(handle) != FALSE; }
};
struct HandleKind {
    using Type = HANDLE;
    static HANDLE empty() { return nullptr; }
    static void close(HANDLE handle) { CloseHandle(handle); }
};
struct FindKind {
    using Type = HANDLE;
    static HANDLE empty() { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE handle) { FindClose(handle); }
};
struct ModuleKind {
    using Type = HMODULE;
    static HMODULE empty() { return nullptr; }
    static void close(HMODULE module) { FreeLibrary(module); }
};

using UniqueFile = UniqueResource<FileKind>;
using UniqueHandle = UniqueResource<HandleKind>; // processes, threads, events
using UniqueFind = UniqueResource<FindKind>;     // searches of FindFirstFileW
using UniqueModule = UniqueResource<ModuleKind>;

} // namespace vell
