#include "src/formats/jpeg/segments.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace vell::formats::jpeg {

// Moves behind the next prefix. Between segments it comes at once; what stands there otherwise is
// passed in blocks that grow, so that neither many gaps nor a long one costs much.
Read<void> SegmentWalk::pass_prefix() {
    constexpr std::size_t least_block = 16;
    constexpr std::size_t largest_block = 1 << 18;
    if (VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Big)) == marker_prefix)
        return {};
    std::vector<char> block;
    for (std::size_t size = least_block;; size = std::min(size * 2, largest_block)) {
        const std::uint64_t start = file_.position();
        block.resize(size);
        const std::size_t count = VELL_TRY(file_.read(block));
        if (count == 0)
            return fault(Damage::CutOff);
        const std::size_t at =
            std::string_view(block.data(), count).find(static_cast<char>(marker_prefix));
        if (at != std::string_view::npos) {
            file_.seek(start + at + 1);
            return {};
        }
        VELL_TRY(spend(count));
    }
}

Read<void> SegmentWalk::spend(std::uint64_t count) {
    if (count > room_)
        return fault(Damage::CutOff);
    room_ -= count;
    return {};
}

Read<bool> begins_stream(Window window) {
    window.seek(0);
    return VELL_TRY(window.read_bytes(start_of_image.size())) == start_of_image;
}

Read<Marker> SegmentWalk::next() {
    VELL_TRY(pass_prefix());
    const std::uint64_t start = file_.position() - 1;
    std::uint8_t code = marker_prefix;
    while (code == marker_prefix) { // any number of fill bytes
        VELL_TRY(spend(cost_of_marker));
        code = VELL_TRY(file_.read_integer<std::uint8_t>(ByteOrder::Big));
    }
    return Marker{SegmentMarker{code}, start};
}

Read<Segment> SegmentWalk::segment_of(const Marker& marker) {
    const auto length = VELL_TRY(file_.read_integer<std::uint16_t>(ByteOrder::Big));
    const std::uint64_t rest = std::max<std::uint64_t>(length, length_size) - length_size;
    const std::uint64_t start = file_.position();
    const Segment segment{marker.code, marker.start, length, start, file_.part(start, rest)};
    file_.skip(rest);
    return segment;
}

Read<bool> Segment::begins_with(std::string_view identifier) const {
    Window bytes = content;
    return VELL_TRY(bytes.read_bytes(identifier.size())) == identifier;
}

} // namespace vell::formats::jpeg
