#include "src/formats/jpeg/icc_chunks.h"

#include <map>

namespace vell::formats::jpeg {
namespace {

struct Chunks {
    std::map<std::uint8_t, std::string> by_number;
    std::uint8_t count = 0;
    std::uint64_t size = 0;
};

Read<void> add_chunk(Window content, std::uint64_t most, Chunks& chunks) {
    content.skip(icc_identifier.size());
    const auto header = VELL_TRY(content.read_record<IccChunkHeader>());
    if (chunks.by_number.empty())
        chunks.count = header.count;
    chunks.size += content.remaining();
    if (chunks.size > most)
        return fault(Damage::TooLarge);
    std::string bytes = VELL_TRY(content.read_rest());
    const bool is_new = chunks.by_number.emplace(header.number, std::move(bytes)).second;
    if (!is_new || header.count != chunks.count)
        return fault(Damage::Corrupt);
    return {};
}

} // namespace

Read<std::string> read_profile(const Window& stream, std::uint64_t most) {
    Chunks chunks;
    SegmentWalk walk(stream);
    for (;;) {
        const auto marker = VELL_TRY(if_sound(walk.next()));
        if (!marker || ends_segments(marker->code))
            break;
        if (stands_alone(marker->code))
            continue;
        const auto segment = VELL_TRY(if_sound(walk.segment_of(*marker)));
        if (!segment)
            break;
        if (segment->marker == SegmentMarker::App2 &&
            VELL_TRY(segment->begins_with(icc_identifier)))
            VELL_TRY(add_chunk(segment->content, most, chunks));
    }
    if (chunks.by_number.empty())
        return fault(Damage::Absent);
    // Numbers count from 1 and are all there when the first, the last and as many as there are fit.
    if (chunks.by_number.size() != chunks.count || chunks.by_number.begin()->first != 1 ||
        chunks.by_number.rbegin()->first != chunks.count)
        return fault(Damage::Corrupt);
    std::string profile;
    profile.reserve(static_cast<std::size_t>(chunks.size));
    for (const auto& [number, bytes] : chunks.by_number)
        profile += bytes;
    return profile;
}

} // namespace vell::formats::jpeg
