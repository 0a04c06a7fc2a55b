#include "src/formats/jpeg/extended_xmp.h"
#include "src/formats/jpeg/icc_chunks.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/xmp.h"
#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats;
using jpeg::SegmentMarker;

class JpegFinder {
  public:
    JpegFinder(const Window& file, BlockCollector& found) : file_(file), found_(found) {}

    // Absent where no stream begins: other formats only say that a picture is there.
    Read<void> run() {
        if (!VELL_TRY(jpeg::begins_stream(file_)))
            return fault(Damage::Absent);
        VELL_TRY(if_sound(walk()));
        VELL_TRY(if_sound(add_packet()));
        VELL_TRY(if_sound(add_resources()));
        if (!found_.wants_icc())
            return {};
        if (auto profile = VELL_TRY(if_sound(jpeg::read_profile(file_, found_.room()))))
            if (auto taken = VELL_TRY(if_sound(found_.take(*std::move(profile)))))
                found_.set_icc(*std::move(taken));
        return {};
    }

  private:
    // Up to the scan, or to where the segments end before.
    Read<void> walk() {
        jpeg::SegmentWalk walk(file_);
        for (;;) {
            const jpeg::Marker marker = VELL_TRY(walk.next());
            if (jpeg::ends_segments(marker.code))
                return {};
            if (jpeg::stands_alone(marker.code))
                continue;
            const jpeg::Segment segment = VELL_TRY(walk.segment_of(marker));
            VELL_TRY(if_sound(note(segment)));
        }
    }

    Read<void> note(const jpeg::Segment& segment) {
        switch (segment.marker) {
        case SegmentMarker::App1:
            return note_app1(segment);
        case SegmentMarker::App13:
            if (found_.wants_resources() &&
                VELL_TRY(segment.begins_with(jpeg::photoshop_identifier)))
                resources_.push_back(segment.content.from(jpeg::photoshop_identifier.size()));
            return {};
        case SegmentMarker::Com:
            if (found_.wants_comments())
                found_.add_comment(VELL_TRY(found_.read(segment.content)));
            return {};
        default:
            return {};
        }
    }

    Read<void> note_app1(const jpeg::Segment& segment) {
        const Window& content = segment.content;
        if (found_.wants_tags() && VELL_TRY(segment.begins_with(jpeg::exif_identifier)))
            return found_.add_tags(content);
        if (!found_.wants_xmp())
            return {};
        if (VELL_TRY(segment.begins_with(xmp::extension_segment)))
            return extension_.add(content.from(xmp::extension_segment.size()));
        if (packet_.empty() && VELL_TRY(segment.begins_with(xmp::packet_segment)))
            packet_ = VELL_TRY(found_.read(content.from(xmp::packet_segment.size())));
        return {};
    }

    // The packet stays as it is where its extension is not all there.
    Read<void> add_packet() {
        if (const auto name = jpeg::extension_name(packet_)) {
            const auto extension = VELL_TRY(if_sound(extension_.read(*name, found_.room())));
            if (extension)
                if (auto joined = jpeg::joined_packet(packet_, *extension))
                    if (auto taken = VELL_TRY(if_sound(found_.take(*std::move(joined)))))
                        packet_ = *std::move(taken);
        }
        found_.set_xmp(std::move(packet_));
        return {};
    }

    // Resources may go on from one segment to the next. Their parts are read when all are known, so
    // that what they are joined in need not grow.
    Read<void> add_resources() {
        std::uint64_t size = 0;
        for (const Window& part : resources_)
            size += part.size();
        std::string bytes;
        bytes.reserve(static_cast<std::size_t>(std::min(size, found_.room())));
        for (const Window& part : resources_)
            if (const auto data = VELL_TRY(if_sound(found_.read(part))))
                bytes += *data;
        BytesInMemory source(bytes);
        return find_in_resources(Window(source), found_);
    }

    Window file_;
    BlockCollector& found_;
    jpeg::ExtendedXmp extension_;
    std::string packet_;
    std::vector<Window> resources_;
};

} // namespace

Read<void> find_in_jpeg(const Window& file, BlockCollector& found) {
    return JpegFinder(file, found).run();
}

} // namespace vell::metadata
