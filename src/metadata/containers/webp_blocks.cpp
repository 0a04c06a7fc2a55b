#include "src/formats/riff.h"
#include "src/formats/webp.h"
#include "src/metadata/containers/block_collector.h"

namespace vell::metadata {
namespace {

using namespace formats;

Read<void> note(const riff::Chunk& chunk, BlockCollector& found) {
    if (chunk.type() == webp::chunk_type::exif && found.wants_tags())
        return found.add_tags(chunk.data);
    if (chunk.type() == webp::chunk_type::xmp && found.wants_xmp())
        found.set_xmp(VELL_TRY(found.read(chunk.data)));
    else if (chunk.type() == webp::chunk_type::profile && found.wants_icc())
        found.set_icc(VELL_TRY(found.read(chunk.data)));
    return {};
}

} // namespace

Read<void> find_in_webp(const Window& file, BlockCollector& found) {
    riff::ChunkWalk walk(VELL_TRY(riff::find_webp(file)));
    while (found.wants_anything()) {
        const auto chunk = VELL_TRY(walk.next());
        if (!chunk)
            return {};
        VELL_TRY(if_sound(note(*chunk, found)));
    }
    return {};
}

} // namespace vell::metadata
