// Directories of a block of tags (TIFF 6.0, section 2), the one walk over their entries.
#pragma once

#include "src/formats/tiff/records.h"
#include "src/formats/window.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vell::formats::tiff {

// A directory of the block, which begins with the header: offsets count from there.
class Directory {
  public:
    static constexpr std::size_t count_size = 2; // of the number of entries before them
    static constexpr std::size_t next_size = 4;  // of the next directory's offset behind them

    // Reads the number of entries; CutOff where the block ends before it.
    static Read<Directory> at(Window block, std::uint64_t offset, ByteOrder order);

    std::uint64_t offset() const { return offset_; }
    std::uint16_t announced() const { return announced_; }
    // Where so many entries end.
    std::uint64_t end_of(std::size_t entries) const {
        return offset_ + count_size + std::uint64_t{entries} * Entry::size;
    }

    // The announced entries, as many of them as lie in the block.
    Read<std::vector<Entry>> entries() const;
    // The offset of the next directory, 0 for none; CutOff where the block ends before it.
    Read<std::uint32_t> next() const;

  private:
    Directory(Window block, std::uint64_t offset, std::uint16_t announced, ByteOrder order)
        : block_(block), offset_(offset), announced_(announced), order_(order) {}

    Window block_;
    std::uint64_t offset_;
    std::uint16_t announced_;
    ByteOrder order_;
};

// The first `most` bytes of an entry's value, fewer where the block ends before.
Read<std::string> read_value(Window block, const Entry& entry, ByteOrder order, std::uint64_t most);

} // namespace vell::formats::tiff
