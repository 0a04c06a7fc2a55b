// Where the parts of a changed block of tags stand.
#pragma once

#include "src/metadata/writing/exif_block.h"

namespace vell::metadata {

// A directory as it stands in a block, cut off where the block ends.
struct DirectoryTable {
    BlockRange place;
    std::vector<tiff::Entry> entries;
    std::uint32_t next = 0; // 0 when the block ends before it
};

// nullopt when not even the number of entries lies within the block.
std::optional<DirectoryTable> read_table(std::string_view block, std::size_t offset,
                                         ByteOrder order);

// Parts of a block; they may overlap. All calls for one set come before the first question.
class BlockRanges {
  public:
    explicit BlockRanges(std::size_t block_size) : changes_(block_size + 1) {}

    // What lies behind the block's end is left out.
    void add(std::uint64_t start, std::uint64_t size);
    // For each byte whether it lies in a range.
    std::vector<bool> bytes() const;

  private:
    std::vector<std::int32_t> changes_; // ranges that begin there less those that end there
};

// Lays out a changed block: what is unchanged first, at its old place; then the changed directories
// and values, at their old places if they fit there, otherwise in what has become free, otherwise
// at the end.
class ExifLayout {
  public:
    ExifLayout(ExifBlock& block, std::size_t most_bytes)
        : block_(block), old_(block.old_), most_bytes_(most_bytes) {}

    Result<std::string> write();

  private:
    // Something to be placed: a directory's table, or a new value of an entry.
    struct Part {
        std::size_t size;
        std::optional<BlockRange> old_place;
        ChangeableDirectory* table;
        ChangeableEntry* value;
        std::optional<std::size_t> place = {};
    };

    void keep_unchanged();
    void keep_entries(const std::vector<tiff::Entry>& entries);
    void keep_chain(std::uint32_t offset);
    void find_kept_bytes();

    Result<void> collect_parts();
    void take_old_place(Part& part);
    void place_the_others();
    BlockRange gap_from(std::size_t start) const;
    void point_to(DirectoryKind parent, std::uint16_t tag, DirectoryKind child);
    std::optional<std::size_t> new_place(const ChangeableDirectory& directory) const;

    ExifBlock& block_;
    std::string_view old_;
    std::size_t most_bytes_;
    BlockRanges kept_ranges_{old_.size()};
    bool may_refer_ = false; // some entry, to bytes that nothing here tells
    std::vector<bool> kept_; // by place in the old block
    std::vector<bool> used_; // the same, with what was placed there since
    std::vector<Part> parts_;
};

} // namespace vell::metadata
