#include "src/metadata/reading/container_metadata.h"

#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/faults.h"
#include "src/metadata/icc/icc_profile.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/reading/xmp.h"

#include <algorithm>
#include <array>
#include <string>

namespace vell::metadata {
namespace {

using formats::Format;

constexpr std::array containers{Format::Riff, Format::Photoshop, Format::IsoMedia, Format::JpegXl,
                                Format::Raf,  Format::Ciff,      Format::Mrw,      Format::X3f};

Result<void> read_blocks(const MetadataBlocks& blocks, const MetadataRequest& request,
                         MetadataText& text) {
    for (const TagBlock& block : blocks.tags)
        VELL_TRY(read_tags(block.place, block.root, request.exif, request.source, text));
    if (blocks.tags.empty() && blocks.xmp)
        append_xmp_packet(*blocks.xmp, request.source, text);
    if (blocks.icc)
        VELL_TRY(describe_icc_profile(*blocks.icc, request, text));
    if (blocks.tags.empty() && !blocks.xmp && !blocks.icc)
        return Failure{ErrorCode::NothingFound};
    return {};
}

} // namespace

Result<void> read_container(files::BufferedReader& file, const MetadataRequest& request,
                            MetadataText& text) {
    const formats::Window window(file);
    formats::Window start = window;
    const std::string bytes = VELL_TRY(coded(start.read_bytes(formats::recognizable_size)));
    if (std::ranges::find(containers, formats::format_of(bytes)) == containers.end())
        return Failure{ErrorCode::NothingFound};
    BlockKinds wanted;
    wanted.tags = request.exif.want_exif || request.exif.want_gps;
    wanted.xmp = request.exif.want_xmp;
    wanted.icc = request.icc != IccSelector::None;
    return read_blocks(VELL_TRY(find_blocks(window, wanted)), request, text);
}

} // namespace vell::metadata
