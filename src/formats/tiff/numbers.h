// The whole numbers that entries of directories have as their values.
#pragma once

#include "src/formats/tiff/directory.h"

#include <cstdint>
#include <vector>

namespace vell::formats::tiff {

// At most `most` of them, of the types Byte, Short and Long and of offsets of directories, as many
// as lie in the block; none for an entry of another type.
Read<std::vector<std::uint32_t>> read_numbers(const Window& block, const Entry& entry,
                                              ByteOrder order, std::size_t most);

} // namespace vell::formats::tiff
