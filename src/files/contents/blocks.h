// Files that are read and written in large blocks.
#pragma once

#include "src/system/file_access.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vell::files {

// Bytes that are read or gathered at a time: whole pages, which the system writes fastest.
inline constexpr std::size_t block_size = 256 * 1024;

// Gathers pieces into whole blocks; only the last one that is flushed is shorter.
class BlockWriter {
  public:
    BlockWriter() { gathered_.reserve(block_size); }

    Result<void> write(File& to, std::string_view bytes);
    Result<void> flush(File& to);

  private:
    std::vector<char> gathered_;
};

// Copies bytes by way of one buffer.
class Copier {
  public:
    // EndOfFile when there are fewer.
    Result<void> copy(File& from, File& to, std::uint64_t count);
    Result<void> copy_rest(File& from, File& to);

  private:
    Result<std::size_t> copy_some(File& from, File& to, std::size_t most);

    std::vector<char> buffer_ = std::vector<char>(block_size);
};

} // namespace vell::files
