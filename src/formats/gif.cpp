#include "src/formats/gif.h"

namespace vell::formats::gif {
namespace {

// The length of the colour table that a packed field announces.
std::uint64_t colour_table_length(std::uint8_t packed) {
    return (packed & 0x80) != 0 ? std::uint64_t{3} << ((packed & 7) + 1) : 0;
}

} // namespace

BlockWalk::BlockWalk(const Window& file, const LogicalScreen& screen) : file_(file) {
    file_.seek(LogicalScreen::start + LogicalScreen::size + colour_table_length(screen.packed));
}

Read<void> BlockWalk::pass_sub_blocks() {
    while (const auto length = VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Little)))
        file_.skip(length);
    return {};
}

Read<Introducer> BlockWalk::next() {
    if (has_sub_blocks_)
        VELL_TRY(pass_sub_blocks());
    has_sub_blocks_ = true;
    const auto introducer =
        Introducer{VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Little))};
    if (introducer == Introducer::Image) {
        const auto descriptor = VELL_TRY(file_.read_record<ImageDescriptor>());
        file_.skip(colour_table_length(descriptor.packed));
        file_.skip(1); // LZW minimum code size
        return introducer;
    }
    if (introducer == Introducer::Extension) {
        file_.skip(1); // label
        return introducer;
    }
    return Introducer::Trailer;
}

} // namespace vell::formats::gif
