// What this process keeps from others: names that nobody can guess, and files that nobody else may
// open. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/windows/handle.h"

#include <string>

namespace vell::windows {

// Random digits of 16 bytes as a UUID writes them, "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx".
Result<std::wstring> random_uuid();

// Permissions for this process' user, the system and administrators, and for nobody else: not those
// that a folder would hand down.
class PrivateAccess {
  public:
    PrivateAccess();

    // For the calls that make something; null where the system has not told whose process it is.
    SECURITY_ATTRIBUTES* get();

  private:
    struct LocalKind {
        using Type = void*;
        static void* empty() { return nullptr; }
        static void close(void* memory) { LocalFree(memory); }
    };
    UniqueResource<LocalKind> descriptor_;
    SECURITY_ATTRIBUTES attributes_{};
};

// Makes a file at a full path, for reading and writing, that only this process' user may open.
// Fails when there is anything of that name.
UniqueFile create_private_file(const std::wstring& path, DWORD share, DWORD flags);

} // namespace vell::windows
