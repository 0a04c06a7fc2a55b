#include "src/formats/sound/flac.h"

namespace vell::formats::flac {

Read<void> each_block(Window file, const BlockVisitor& visitor) {
    constexpr int most_blocks = 4096;
    constexpr std::uint32_t signature = 0x664C6143; // "fLaC"
    file.seek(0);
    if (VELL_TRY(file.read_integer<std::uint32_t>(ByteOrder::Big)) != signature)
        return fault(Damage::Absent);
    for (int i = 0; i < most_blocks; ++i) {
        const auto header = VELL_TRY(if_sound(file.read_record<BlockHeader>()));
        if (!header)
            return {};
        VELL_TRY(visitor(header->type(), file.part(file.position(), header->length())));
        file.skip(header->length());
        if (header->is_last())
            return {};
    }
    return {};
}

Read<Picture> Picture::read(Window block) {
    constexpr std::uint64_t size_and_colours = 4 * sizeof(std::uint32_t);
    block.seek(0);
    const auto type = VELL_TRY(block.read_integer<std::uint32_t>(ByteOrder::Big));
    block.skip(VELL_TRY(block.read_integer<std::uint32_t>(ByteOrder::Big))); // its media type
    block.skip(VELL_TRY(block.read_integer<std::uint32_t>(ByteOrder::Big))); // its description
    block.skip(size_and_colours);
    const auto length = VELL_TRY(block.read_integer<std::uint32_t>(ByteOrder::Big));
    return Picture{type, block.part(block.position(), length)};
}

} // namespace vell::formats::flac
