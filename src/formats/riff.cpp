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

Read<Window> find_webp(const Window& file) {
    ChunkWalk files(file);
    const auto form = VELL_TRY(files.next());
    if (!form || form->type() != "RIFF")
        return fault(Damage::Absent);
    Window content = form->data;
    if (VELL_TRY(content.read_bytes(form_size)) != "WEBP")
        return fault(Damage::Absent);
    return content.from(form_size);
}

} // namespace vell::formats::riff
