#include "src/metadata/containers/metadata_blocks.h"

#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <array>

namespace vell::metadata {
namespace {

using namespace formats;

struct Finder {
    Format format;
    Read<void> (*find)(const Window& file, BlockCollector& found);
};
constexpr std::array finders{
    Finder{Format::Jpeg, find_in_jpeg},
    Finder{Format::Tiff, find_in_tiff},
    Finder{Format::Png, find_in_png},
    Finder{Format::Gif, find_in_gif},
};

} // namespace

Result<MetadataBlocks> find_blocks(Window file, const BlockKinds& wanted) {
    file.seek(0);
    MetadataBlocks blocks;
    const auto start = file.read_bytes(recognizable_size);
    if (!start)
        return Failure{start.error().of_source};
    blocks.format = format_of(*start);
    const auto* const finder = std::ranges::find(finders, blocks.format, &Finder::format);
    if (finder == finders.end())
        return blocks;
    BlockCollector found(wanted, blocks);
    if (const Read<void> done = if_sound(finder->find(file, found)); !done)
        return Failure{done.error().of_source};
    return blocks;
}

} // namespace vell::metadata
