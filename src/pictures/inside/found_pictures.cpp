#include "src/pictures/inside/found_pictures.h"

#include "src/formats/jpeg/segments.h"
#include "src/formats/png/chunks.h"
#include "src/formats/recognition.h"

#include <algorithm>

namespace vell::pictures {
namespace {

using namespace formats;

struct Frame {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::optional<Orientation> orientation;
};

bool can_be_decoded(jpeg::SegmentMarker marker, const jpeg::FrameHeader& frame) {
    using enum jpeg::SegmentMarker;
    return (marker == Sof0 || marker == Sof1 || marker == Sof2) && frame.sample_precision == 8 &&
           frame.lines > 0 && frame.samples_per_line > 0 && frame.components > 0 &&
           frame.components <= 4;
}

// Absent for a stream whose tables or scan are not there, or which cannot be decoded.
Read<Frame> frame_of_jpeg(const Window& jpeg) {
    constexpr std::uint64_t longest_start = 1U << 20U; // with profiles and notes before the frame
    constexpr int most_segments = 512;
    const Window start = jpeg.part(0, longest_start);
    Frame frame;
    bool has_tables = false;
    jpeg::SegmentWalk walk(start);
    for (int i = 0; i < most_segments; ++i) {
        const jpeg::Marker marker = VELL_TRY(walk.next());
        if (jpeg::ends_segments(marker.code)) {
            if (marker.code != jpeg::SegmentMarker::Sos || frame.width == 0 || !has_tables)
                break;
            return frame;
        }
        if (jpeg::stands_alone(marker.code) || marker.code == jpeg::SegmentMarker{0})
            continue;
        jpeg::Segment segment = VELL_TRY(walk.segment_of(marker));
        has_tables |= marker.code == jpeg::SegmentMarker::Dqt;
        if (jpeg::is_start_of_frame(marker.code)) {
            const auto header = VELL_TRY(segment.content.read_record<jpeg::FrameHeader>());
            if (!can_be_decoded(marker.code, header))
                break;
            frame.width = header.samples_per_line;
            frame.height = header.lines;
        } else if (marker.code == jpeg::SegmentMarker::App1 && !frame.orientation &&
                   VELL_TRY(segment.begins_with(jpeg::exif_identifier))) {
            const Window block = segment.content.from(jpeg::exif_identifier.size());
            frame.orientation =
                VELL_TRY(if_sound(orientation_in_tags(block))).value_or(std::nullopt);
        }
    }
    return fault(Damage::Absent);
}

Read<Frame> frame_of_png(const Window& file) {
    png::ChunkWalk walk(file);
    auto chunk = VELL_TRY(walk.next());
    if (!chunk || chunk->type() != "IHDR")
        return fault(Damage::Absent);
    const auto header = VELL_TRY(chunk->data.read_record<png::ImageHeader>());
    if (header.width == 0 || header.height == 0)
        return fault(Damage::Absent);
    return Frame{header.width, header.height, {}};
}

Read<Frame> frame_of(Window picture) {
    picture.seek(0);
    switch (format_of(VELL_TRY(picture.read_bytes(recognizable_size)))) {
    case Format::Jpeg:
        return frame_of_jpeg(picture);
    case Format::Png:
        return frame_of_png(picture);
    default:
        return fault(Damage::Absent);
    }
}

} // namespace

Read<bool> FoundPictures::add(const Window& part, Kind kind, std::optional<Orientation> of_file) {
    if (pictures_.size() >= most_pictures || seen_.size() >= 2 * most_pictures ||
        !part.is_whole() || !seen_.insert(part.start()).second)
        return false;
    const auto frame = VELL_TRY(if_sound(frame_of(part)));
    if (!frame)
        return false;
    pictures_.push_back(
        {.kind = kind,
         .offset = part.start(),
         .size = part.size(),
         .width = frame->width,
         .height = frame->height,
         .orientation = frame->orientation.value_or(of_file.value_or(Orientation::TopLeft))});
    return true;
}

Read<bool> FoundPictures::add_copy(std::string bytes, Kind kind,
                                   std::optional<Orientation> of_file) {
    if (pictures_.size() >= most_pictures)
        return false;
    BytesInMemory source(bytes);
    const auto frame = VELL_TRY(if_sound(frame_of(Window(source))));
    if (!frame)
        return false;
    const std::uint64_t size = bytes.size();
    pictures_.push_back(
        {.kind = kind,
         .size = size,
         .width = frame->width,
         .height = frame->height,
         .orientation = frame->orientation.value_or(of_file.value_or(Orientation::TopLeft)),
         .bytes = std::move(bytes)});
    return true;
}

} // namespace vell::pictures
