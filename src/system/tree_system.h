// The tree of files and folders: what makes, moves and removes folders, and the rules of names and
// places.
#pragma once

#include "src/system/file_access.h"
#include "src/system/held_item.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vell::files {

// Something that stands in a folder, at any depth.
struct ItemBelow {
    NativePath path;
    ItemKind kind;
    bool is_link; // to a folder: a junction, a symbolic link, a mounted volume
};
using VisitItem = std::function<Result<void>(const ItemBelow&)>;

class TreeSystem {
  public:
    virtual ~TreeSystem() = default;

    // The path from its root on, without "." and "..", names separated by "\"; what "\\?\" stands
    // before stays as it is. See full_path in item_paths.h.
    virtual Result<std::u16string> absolute_path(const std::u16string& path) = 0;
    // Whether two names or paths differ in letter case at most, by the file system's own rule.
    virtual bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) = 0;
    // Makes names that differ in letter case only equal, by the same rule.
    virtual void fold_case(std::u16string& name) = 0;
    virtual bool on_same_volume(const NativePath& a, const NativePath& b) = 0;

    // Makes one folder. NotFound or FolderNotFound when its parent is missing, AlreadyExists when
    // there is anything of its name.
    virtual Result<void> create_folder(const NativePath& path) = 0;
    // Removes an empty folder, or a link to a folder; Busy when it is not empty.
    virtual Result<void> remove_folder(const NativePath& path) = 0;
    // Moves or renames; never replaces anything: AlreadyExists.
    virtual Result<void> move(const NativePath& source, const NativePath& target) = 0;

    // Whether the item itself is a symbolic link, a junction or a mounted volume.
    virtual bool is_link(const NativePath& path) = 0;
    // Holds an item, or what a link leads to. NotFound.
    virtual Result<std::unique_ptr<HeldItem>> hold(const NativePath& path, FollowLink follow) = 0;
    // Calls `visit` with everything below a folder, a folder before what it holds, until it fails.
    // No link is followed.
    virtual Result<void> for_each_below(const NativePath& folder, const VisitItem& visit) = 0;
};

} // namespace vell::files
