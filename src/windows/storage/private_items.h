// What this process keeps from others: names that nobody can guess, and files that nobody else may
// open. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/windows/handle.h"

#include <cstdint>
#include <string>

namespace vell::windows {

// Random digits of 16 bytes as a UUID writes them, "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx".
Result<std::wstring> random_uuid();

// Memory that calls about security hand over.
template <typename Pointer>
struct LocalMemoryKind {
    using Type = Pointer;
    static Pointer empty() { return nullptr; }
    static void close(Pointer memory) { LocalFree(memory); }
};
using UniqueDescriptor = UniqueResource<LocalMemoryKind<PSECURITY_DESCRIPTOR>>;

// Who beside the user has all rights in what is made.
enum class AlsoAllowed : std::uint8_t { Nobody, SystemAndAdministrators };

// Permissions for this process' user, the system and administrators, and for nobody else: not those
// that a folder would hand down.
class PrivateAccess {
  public:
    explicit PrivateAccess(AlsoAllowed others = AlsoAllowed::SystemAndAdministrators);

    // For the calls that make something; null where the system has not told whose process it is.
    SECURITY_ATTRIBUTES* get();

  private:
    UniqueDescriptor descriptor_;
    SECURITY_ATTRIBUTES attributes_{};
};

// Makes a file at a full path, for reading and writing, that only this process' user may open.
// Fails when there is anything of that name.
UniqueFile create_private_file(const std::wstring& path, DWORD share, DWORD flags);

} // namespace vell::windows
