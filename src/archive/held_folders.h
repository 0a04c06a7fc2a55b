// The folders that an archive is expanded into, each looked at once and held from then on.
#pragma once

#include "src/base/result.h"
#include "src/system/tree_system.h"

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vell::archive {

// The name of an item as Windows makes it, for what it is told to make in a folder: without dots
// and blanks at its end, but with them in a folder whose path begins with "\\?\".
std::u16string_view name_as_made(std::u16string_view folder, std::u16string_view name);

// Folders below one that is held, by their paths from there. Each is reached through the held one
// above it, so no link can come in between. A bounded number is held, the ones used last; one that
// was let go is looked at anew.
class HeldFolders {
  public:
    using Held = std::shared_ptr<files::HeldItem>;

    // Enough for two branches as deep as any path can be.
    static constexpr std::size_t most = 1'024;

    // A top that could not be held fails when it is asked for.
    HeldFolders(Result<Held> top, std::u16string_view top_path)
        : top_(std::move(top)), top_path_(top_path) {}

    // The top for an empty path. A folder that is missing is made where all above it are there.
    // BadName for a link on the way; otherwise the code of a target that cannot be opened.
    Result<Held> folder(std::u16string_view path);
    // Adds a folder that was made.
    void add(std::u16string_view path, Held folder);

  private:
    struct Entry {
        std::u16string path;
        Held folder;
    };
    using Entries = std::list<Entry>; // the last used first

    struct Reached {
        std::size_t end; // of that part of a path
        Held folder;
    };

    Held find(std::u16string_view path);
    Result<Reached> nearest(std::u16string_view path);
    Result<Held> step(files::HeldItem& above, std::u16string_view name, bool is_last);

    Result<Held> top_;
    std::u16string top_path_;
    Entries entries_;
    std::unordered_map<std::u16string_view, Entries::iterator> places_;
};

} // namespace vell::archive
