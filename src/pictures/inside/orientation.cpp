#include "src/pictures/inside/orientation.h"

#include "src/formats/jpeg/segments.h"
#include "src/formats/png/chunks.h"
#include "src/formats/recognition.h"
#include "src/formats/riff.h"
#include "src/formats/tiff/numbers.h"
#include "src/formats/webp.h"
#include "src/pictures/inside/camera_orientation.h"
#include "src/pictures/inside/faults.h"

#include <string>

namespace vell::pictures {
namespace {

using namespace formats;
using Said = std::optional<Orientation>;

constexpr std::uint16_t orientation_tag = 274;

Said orientation_of_number(std::uint32_t number) {
    if (number < 1 || number > 8)
        return std::nullopt;
    return Orientation{static_cast<std::uint8_t>(number)};
}

// Some writers put before the tags what JPEG files have there.
Read<Window> behind_identifier(Window block) {
    const std::string start = VELL_TRY(block.read_bytes(jpeg::exif_identifier.size()));
    return block.from(start == jpeg::exif_identifier ? start.size() : 0);
}

Read<Said> in_block(const Window& block) {
    return orientation_in_tags(VELL_TRY(behind_identifier(block)));
}

Read<Said> in_png(const Window& file) {
    png::ChunkWalk walk(file);
    for (;;) {
        const auto chunk = VELL_TRY(walk.next());
        if (!chunk)
            return Said();
        if (chunk->type() == "eXIf")
            return in_block(chunk->data);
    }
}

Read<Said> in_webp(const Window& file) {
    riff::ChunkWalk files(file);
    const auto form = VELL_TRY(files.next());
    if (!form)
        return Said();
    Window content = form->data;
    if (VELL_TRY(content.read_bytes(riff::form_size)) != formats::webp::form)
        return Said();
    riff::ChunkWalk walk(content.from(riff::form_size));
    for (;;) {
        const auto chunk = VELL_TRY(walk.next());
        if (!chunk)
            return Said();
        if (chunk->type() == formats::webp::chunk_type::exif)
            return in_block(chunk->data);
    }
}

Read<Said> said_by(Window file) {
    const std::string start = VELL_TRY(file.read_bytes(recognizable_size));
    file.seek(0);
    switch (const Format format = format_of(start)) {
    case Format::Jpeg:
        return orientation_in_jpeg(file);
    case Format::Png:
        return in_png(file);
    case Format::Riff:
        return in_webp(file);
    case Format::Tiff:
        return orientation_in_tags(file);
    case Format::Unknown:
        return begins_like_tiff(start) ? orientation_in_tags(file) : Said();
    default:
        return orientation_in_camera_file(format, file);
    }
}

} // namespace

Read<Said> orientation_in_tags(const Window& block) {
    Window start = block.from(0);
    const std::string bytes = VELL_TRY(start.read_bytes(tiff::Header::size));
    const auto header = tiff::Header::read(bytes);
    if (!header)
        return fault(Damage::Absent);
    const auto first = VELL_TRY(tiff::Directory::at(block, header->first_directory, header->order));
    for (const tiff::Entry& entry : VELL_TRY(first.entries())) {
        if (entry.tag != orientation_tag)
            continue;
        const auto numbers = VELL_TRY(tiff::read_numbers(block, entry, header->order, 1));
        return numbers.empty() ? Said() : orientation_of_number(numbers.front());
    }
    return Said();
}

Read<Said> orientation_in_jpeg(const Window& jpeg) {
    if (!VELL_TRY(jpeg::begins_stream(jpeg)))
        return fault(Damage::Absent);
    jpeg::SegmentWalk walk(jpeg);
    for (;;) {
        const jpeg::Marker marker = VELL_TRY(walk.next());
        if (jpeg::ends_segments(marker.code))
            return Said();
        if (jpeg::stands_alone(marker.code) || marker.code == jpeg::SegmentMarker{0})
            continue;
        const jpeg::Segment segment = VELL_TRY(walk.segment_of(marker));
        if (segment.marker == jpeg::SegmentMarker::App1 &&
            VELL_TRY(segment.begins_with(jpeg::exif_identifier)))
            return orientation_in_tags(segment.content.from(jpeg::exif_identifier.size()));
    }
}

Result<Orientation> orientation_of(ByteSource& file) {
    return VELL_TRY(despite_damage(said_by(Window(file)), Said())).value_or(Orientation::TopLeft);
}

} // namespace vell::pictures
