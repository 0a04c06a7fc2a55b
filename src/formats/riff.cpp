#include "src/formats/riff.h"

namespace vell::formats::riff {

Read<std::optional<Chunk>> ChunkWalk::next() {
    if (around_.remaining() < ChunkHeader::size)
        return std::optional<Chunk>();
    const std::uint64_t start = around_.start() + around_.position();
    const auto header = VELL_TRY(around_.read_record<ChunkHeader>(order_));
    const Chunk chunk{header, start, around_.part(around_.position(), header.data_size)};
    around_.skip(std::uint64_t{header.data_size} + header.data_size % 2);
    return std::optional(chunk);
}

} // namespace vell::formats::riff
