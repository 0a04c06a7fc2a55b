#include "src/metadata/images/container_headers.h"

#include "src/formats/jpeg_xl.h"
#include "src/formats/photoshop.h"
#include "src/formats/webp.h"
#include "src/metadata/images/unsupported.h"

namespace vell::metadata {
namespace {

using namespace formats;

constexpr std::uint64_t colour_channels = 3;

Read<Resolution> photoshop_resolution(const Window& file) {
    photoshop::ResourceWalk walk(VELL_TRY(photoshop::find_resources(file)));
    while (const auto part = VELL_TRY(walk.next())) {
        if (!part->is(photoshop::ResourceId::Resolution))
            continue;
        Window data = part->data;
        const auto info = VELL_TRY(data.read_record<photoshop::ResolutionInfo>());
        constexpr double one = 65'536;
        return per_inch(info.horizontal / one, info.vertical / one, 1);
    }
    return fault(Damage::Absent);
}

Read<ImageHeader> read_photoshop(Window file) {
    file.seek(0);
    const auto read = VELL_TRY(file.read_record<photoshop::FileHeader>());
    ImageHeader header;
    header.width = read.width;
    header.height = read.height;
    header.depth = std::uint64_t{read.channels} * read.depth;
    if (const auto resolution = VELL_TRY(if_sound(photoshop_resolution(file))))
        header.set_resolution(*resolution);
    return header;
}

} // namespace

Result<ImageHeader> read_webp_header(Window file) {
    constexpr std::uint64_t bits_of_channel = 8;
    const auto canvas = VELL_TRY(unless_unsupported(webp::read_canvas(file)));
    ImageHeader header;
    header.width = canvas.width;
    header.height = canvas.height;
    header.depth = bits_of_channel * (colour_channels + (canvas.has_alpha ? 1 : 0));
    header.image_count = canvas.frames;
    return header;
}

Result<ImageHeader> read_photoshop_header(Window file) {
    return unless_unsupported(read_photoshop(file));
}

Result<ImageHeader> read_jpeg_xl_header(Window file) {
    const auto image = VELL_TRY(unless_unsupported(jpeg_xl::read_image_header(file)));
    ImageHeader header;
    header.width = image.width;
    header.height = image.height;
    header.depth = colour_channels * image.bits_per_sample;
    return header;
}

} // namespace vell::metadata
