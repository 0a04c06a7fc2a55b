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
    Finder{Format::Riff, find_in_webp},
    Finder{Format::Photoshop, find_in_photoshop},
    Finder{Format::IsoMedia, find_in_iso_media},
    Finder{Format::JpegXl, find_in_jpeg_xl},
    Finder{Format::Raf, find_in_raf},
    Finder{Format::Ciff, find_in_ciff},
    Finder{Format::Mrw, find_in_mrw},
    Finder{Format::X3f, find_in_x3f},
};

} // namespace

Result<MetadataBlocks> find_blocks(Window file, const BlockKinds& wanted) {
    file.seek(0);
    MetadataBlocks blocks;
    const auto start = file.read_bytes(recognizable_size);
    if (!start)
        return Failure{start.error().of_source};
    blocks.format = format_of(*start);
    // Raw photographs that are TIFF files but for their number, and BigTIFF.
    if (blocks.format == Format::Unknown && begins_like_tiff(*start))
        blocks.format = Format::Tiff;
    const auto* const finder = std::ranges::find(finders, blocks.format, &Finder::format);
    if (finder == finders.end())
        return blocks;
    BlockCollector found(wanted, blocks);
    if (const Read<void> done = if_sound(finder->find(file, found)); !done)
        return Failure{done.error().of_source};
    return blocks;
}

} // namespace vell::metadata
