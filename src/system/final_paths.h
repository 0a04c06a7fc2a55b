// Where items really stand, whatever spelling, short name or link leads to them.
#pragma once

#include "src/system/file_access.h"

#include <memory>
#include <string>

namespace vell::files {

// Somebody's interest in an item: while it lives, neither the item nor a folder above it can get
// another name or place, or be removed.
class Hold {
  public:
    Hold() = default;
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    virtual ~Hold() = default;
};

struct HeldFolder {
    std::u16string path; // as of() tells it
    std::unique_ptr<Hold> hold;
};

class FinalPaths {
  public:
    virtual ~FinalPaths() = default;

    // The path of an item that exists, links followed, in long names and from its root on: "C:\" or
    // "\\server\share\", without a separator at the end of others. Empty where the item has no such
    // path. NotFound or FolderNotFound where nothing is there.
    virtual Result<std::u16string> of(const NativePath& path) = 0;
    // The same for a folder, which is held.
    virtual Result<HeldFolder> hold(const NativePath& folder) = 0;
};

} // namespace vell::files
