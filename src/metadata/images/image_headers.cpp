#include "src/metadata/images/image_headers.h"

#include "src/formats/bmp.h"
#include "src/formats/gif.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/png/chunks.h"
#include "src/metadata/faults.h"
#include "src/metadata/images/tiff_image.h"

#include <optional>
#include <string>

namespace vell::metadata {
namespace {

using namespace formats;

constexpr double metres_per_inch = 0.0254;

std::optional<Resolution> jfif_resolution(std::string_view segment) {
    const auto jfif = read_record<jpeg::JfifHeader>(segment);
    if (!jfif || !segment.starts_with(jpeg::JfifHeader::name) ||
        (jfif->units != 1 && jfif->units != 2))
        return std::nullopt;
    return per_inch(jfif->horizontal_density, jfif->vertical_density,
                    jfif->units == 1 ? 1 : centimetres_per_inch);
}

// What the segments before the frame say.
struct JpegResolutions {
    std::optional<Resolution> jfif;
    std::optional<Resolution> from_tags;

    Read<void> note(jpeg::Segment segment) {
        if (segment.marker != SegmentMarker::App0 && segment.marker != SegmentMarker::App1)
            return {};
        const std::string bytes = VELL_TRY(segment.content.read_bytes(segment.length));
        if (segment.marker == SegmentMarker::App0 && !jfif)
            jfif = jfif_resolution(bytes);
        if (segment.marker == SegmentMarker::App1 && !from_tags &&
            bytes.starts_with(jpeg::exif_identifier))
            from_tags = resolution_of(std::string_view(bytes).substr(jpeg::exif_identifier.size()));
        return {};
    }

  private:
    using SegmentMarker = jpeg::SegmentMarker;
};

ImageHeader header_of(const png::ImageHeader& chunk) {
    ImageHeader header;
    header.width = chunk.width;
    header.height = chunk.height;
    header.depth = std::uint64_t{chunk.bit_depth} * chunk.channels();
    return header;
}

Resolution pixel_resolution(const png::PixelDimensions& pixels) {
    constexpr std::uint8_t metre = 1;
    return pixels.unit == metre ? per_inch(pixels.horizontal, pixels.vertical, metres_per_inch)
                                : per_inch(0, 0, 1);
}

} // namespace

Result<ImageHeader> read_jpeg_header(Window file) {
    using jpeg::SegmentMarker;
    JpegResolutions resolutions;
    jpeg::SegmentWalk walk(file);
    for (;;) {
        const jpeg::Marker marker = VELL_TRY(coded(walk.next()));
        if (jpeg::ends_segments(marker.code))
            return Failure{ErrorCode::WrongImageKind};
        if (jpeg::stands_alone(marker.code) || marker.code == SegmentMarker{0})
            continue;
        const jpeg::Segment segment = VELL_TRY(coded(walk.segment_of(marker)));
        if (segment.is_too_short())
            return Failure{ErrorCode::SegmentTooShort};
        if (!jpeg::is_start_of_frame(marker.code)) {
            VELL_TRY(coded(resolutions.note(segment)));
            continue;
        }
        // Whatever its length says.
        file.seek(segment.content_start);
        const auto frame = VELL_TRY(coded(file.read_record<jpeg::FrameHeader>()));
        ImageHeader header;
        header.width = frame.samples_per_line;
        header.height = frame.lines;
        header.depth = std::uint64_t{frame.sample_precision} * frame.components;
        if (resolutions.jfif || resolutions.from_tags)
            header.set_resolution(resolutions.jfif ? *resolutions.jfif : *resolutions.from_tags);
        return header;
    }
}

Result<ImageHeader> read_png_header(Window file) {
    std::optional<ImageHeader> header;
    png::ChunkWalk walk(file);
    for (;;) {
        const auto read = walk.next();
        if (header && (!read || !*read))
            return *header;
        const std::optional<png::Chunk> chunk = VELL_TRY(coded(read));
        if (!chunk)
            return Failure{ErrorCode::EndOfFile};
        file.seek(chunk->data_start); // the fields are there whatever the length says
        const std::string_view type = chunk->type();
        if (!header && type == "IHDR")
            header = header_of(VELL_TRY(coded(file.read_record<png::ImageHeader>())));
        else if (!header && type != "CgBI")
            return Failure{ErrorCode::WrongImageKind};
        else if (header && type == "pHYs")
            header->set_resolution(
                pixel_resolution(VELL_TRY(coded(file.read_record<png::PixelDimensions>()))));
        else if (header && type == "acTL")
            header->image_count = VELL_TRY(coded(file.read_record<png::AnimationControl>())).frames;
        else if (header && (type == "IDAT" || type == "IEND"))
            return *header;
    }
}

Result<ImageHeader> read_gif_header(Window file) {
    file.seek(gif::LogicalScreen::start);
    const auto screen = VELL_TRY(coded(file.read_record<gif::LogicalScreen>()));
    ImageHeader header;
    header.width = screen.width;
    header.height = screen.height;
    header.depth = screen.bits_per_pixel();
    header.image_count = 0;
    // A file that ends before its trailer has the images that began.
    for (gif::BlockWalk walk(file, screen);;) {
        const auto block = walk.next();
        if (!block && block.error().damage == Damage::CutOff)
            return header;
        const gif::Introducer introducer = VELL_TRY(coded(block));
        if (introducer == gif::Introducer::Trailer)
            return header;
        header.image_count += introducer == gif::Introducer::Image ? 1 : 0;
    }
}

Result<ImageHeader> read_bmp_header(Window file) {
    file.seek(bmp::header_start);
    const auto size = VELL_TRY(coded(file.read_integer<std::uint32_t>(ByteOrder::Little)));
    ImageHeader header;
    if (size == bmp::core_header) {
        const auto core = VELL_TRY(coded(file.read_record<bmp::CoreHeader>()));
        header.width = core.width;
        header.height = core.height;
        header.depth = core.bit_count;
        return header;
    }
    if (size < bmp::shortest_info_header || size > bmp::longest_info_header)
        return Failure{ErrorCode::WrongImageKind};
    const auto info = VELL_TRY(coded(file.read_record<bmp::InfoHeader>()));
    const std::int64_t height = info.height;
    header.width = info.width;
    header.height = static_cast<std::uint64_t>(height < 0 ? -height : height);
    header.depth = info.bit_count;
    if (size >= bmp::info_header_with_resolution) {
        const auto rest = VELL_TRY(coded(file.read_record<bmp::InfoHeaderRest>()));
        header.set_resolution(
            per_inch(rest.horizontal_resolution, rest.vertical_resolution, metres_per_inch));
    }
    return header;
}

} // namespace vell::metadata
