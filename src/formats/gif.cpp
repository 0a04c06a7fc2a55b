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

// Sub-blocks up to an empty one (15).
Read<void> BlockWalk::pass_data() {
    if (!has_data_)
        return {};
    while (const auto length = VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Little)))
        file_.skip(length);
    has_data_ = false;
    return {};
}

Read<Introducer> BlockWalk::next() {
    VELL_TRY(pass_data());
    const auto introducer =
        Introducer{VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Little))};
    if (introducer == Introducer::Image) {
        const auto descriptor = VELL_TRY(file_.read_record<ImageDescriptor>());
        file_.skip(colour_table_length(descriptor.packed));
        file_.skip(1); // LZW minimum code size
        has_data_ = true;
        return introducer;
    }
    if (introducer == Introducer::Extension) {
        label_ = VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Little));
        has_data_ = true;
        return introducer;
    }
    return Introducer::Trailer;
}

} // namespace vell::formats::gif
