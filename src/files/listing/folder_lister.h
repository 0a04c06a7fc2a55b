// The names of what a folder holds, as one text.
#pragma once

#include "src/system/folder_reader.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vell::files {

struct ListingOptions {
    bool files = false;
    bool folders = false;
    bool point_folders = false; // folders whose name begins with ".", "." and ".." among them
    bool invisibles = false;    // items with the hidden attribute
    bool aliases = false;       // shortcut files
    bool recursive = false;     // sub-folders too, except behind links
    bool short_names = false;   // 8.3 names where there are any
    std::u16string folder_suffix = {};
    std::u16string prefix = {}; // in front of every name
    char16_t separator = u'/';  // behind the names of folders in front of what they hold

    // A search is a listing of some names, that goes on where it can. Empty functions mean all
    // names and no end of time; the time is looked at once for each batch of entries.
    std::function<bool(std::u16string_view name)> wants = {};
    std::function<bool()> time_is_up = {};
    // Takes each kept entry instead of the text, with its path as a line would show it.
    std::function<void(const FolderEntry& entry, std::u16string_view path)> take = {};
    std::uint64_t most_lines = std::numeric_limits<std::uint64_t>::max();
    bool any_depth = false;       // paths have no limit but that of the system
    bool skip_unreadable = false; // folders below the first one
};

// Lists folders: each kept name with a carriage return behind it, in the order of the file system,
// a sub-folder's contents right after its own line and with its path from the top in front.
class FolderLister {
  public:
    // A folder's path, its separator included, is shorter than this.
    static constexpr std::size_t path_limit = 1996;

    FolderLister(FolderSource& source, ListingOptions options)
        : source_(source), options_(std::move(options)) {}

    // Appends the listing of `folder`, whose path ends with "\" or ":", to `text`. BadParameter for
    // any other path and for one, of a sub-folder too, that is not shorter than path_limit. A
    // folder that the system does not read ends the listing with the system's own, positive number.
    // TimeLimitPassed when time_is_up says so.
    Result<void> append(const std::u16string& folder, std::u16string& text);
    // Folders whose items are missing from the last listing, all or some of them.
    std::uint64_t skipped() const { return skipped_; }

  private:
    // A folder on the way from the top to the one that is being read. The levels stay when their
    // folders are done, since the next ones need the same room.
    struct Level {
        std::unique_ptr<FolderReader> reader;
        std::vector<FolderEntry> batch = std::vector<FolderEntry>(FolderSource::batch_size);
        std::size_t count = 0;
        std::size_t next = 0;
        std::size_t path_length = 0;
        std::size_t prefix_length = 0;
    };

    bool keeps(const FolderEntry& entry) const;
    void give(const FolderEntry& entry, std::u16string& text);
    Result<void> enter();
    void leave();
    Result<const FolderEntry*> next_entry(Level& level);
    Result<void> pass_over(ErrorCode code);

    FolderSource& source_;
    const ListingOptions options_;
    std::vector<Level> levels_;
    std::size_t depth_ = 0;
    std::uint64_t skipped_ = 0;
    // Of the folder that is being read.
    std::u16string path_;
    std::u16string prefix_;
    std::u16string line_; // room that is used again
};

} // namespace vell::files
