// Directories of a block of tags (TIFF 6.0, section 2) and those of BigTIFF, whose offsets and
// counts have eight bytes; the one walk over their entries.
#pragma once

#include "src/formats/tiff/records.h"
#include "src/formats/window.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vell::formats::tiff {

// How the numbers of a block are written.
struct Layout {
    Layout(ByteOrder order_of_bytes, bool is_big_tiff = false)
        : order(order_of_bytes), is_big(is_big_tiff) {}

    ByteOrder order;
    bool is_big;
};

// What a block begins with, whichever kind it is.
struct Start {
    static constexpr std::uint16_t big_number = 43;

    Layout layout;
    std::uint16_t magic;
    std::uint64_t first_directory;

    // Absent for another byte order than "II" and "MM", or too few bytes.
    static Read<Start> read(Window block);
};

// A directory of the block, which begins with the header: offsets count from there.
class Directory {
  public:
    static constexpr std::size_t count_size = 2; // of the number of entries before them
    static constexpr std::size_t next_size = 4;  // of the next directory's offset behind them

    // Reads the number of entries; CutOff where the block ends before it.
    // Corrupt when a BigTIFF file says that there are more than 65,535.
    static Read<Directory> at(Window block, std::uint64_t offset, Layout layout);

    std::uint16_t announced() const { return announced_; }
    // Where so many entries end.
    std::uint64_t end_of(std::size_t entries) const {
        return layout_.is_big ? offset_ + big_count_size + std::uint64_t{entries} * big_entry_size
                              : offset_ + count_size + std::uint64_t{entries} * Entry::size;
    }

    // The announced entries, as many of them as lie in the block.
    Read<std::vector<Entry>> entries() const;
    // The offset of the next directory, 0 for none; CutOff where the block ends before it.
    Read<std::uint64_t> next() const;

  private:
    static constexpr std::size_t big_count_size = 8;
    static constexpr std::size_t big_entry_size = 20;

    Directory(Window block, std::uint64_t offset, std::uint16_t announced, Layout layout)
        : block_(block), offset_(offset), announced_(announced), layout_(layout) {}

    Window block_;
    std::uint64_t offset_;
    std::uint16_t announced_;
    Layout layout_;
};

// The first `most` bytes of an entry's value, fewer where the block ends before.
Read<std::string> read_value(Window block, const Entry& entry, ByteOrder order, std::uint64_t most);

} // namespace vell::formats::tiff
