#include "src/metadata/writing/jpeg_rewriter.h"

#include "src/base/bytes.h"
#include "src/files/contents/blocks.h"
#include "src/formats/recognition.h"
#include "src/metadata/faults.h"
#include "src/metadata/writing/multi_picture.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using files::BufferedReader;

namespace jpeg = formats::jpeg;
using formats::Window;
using jpeg::Segment;
using jpeg::SegmentMarker;

// The segment behind a marker; a whole one. TEM is read as if it had a length, as in the walk that
// reads.
Result<Segment> segment_of(jpeg::SegmentWalk& walk, const jpeg::Marker& marker) {
    if ((jpeg::stands_alone(marker.code) && marker.code != SegmentMarker::Tem) ||
        jpeg::ends_segments(marker.code))
        return walk.without_segment(marker);
    const Segment segment = VELL_TRY(coded(walk.segment_of(marker)));
    if (segment.is_too_short())
        return Failure{ErrorCode::SegmentTooShort};
    if (!segment.content.is_whole())
        return Failure{ErrorCode::EndOfFile};
    return segment;
}

Result<bool> is_of_kind(const Segment& segment, const SegmentKind& kind) {
    if (segment.marker != kind.marker)
        return false;
    return coded(segment.begins_with(kind.identifier));
}

// Where the segment comes to stand.
class PlaceSearch {
  public:
    PlaceSearch(const Window& file, const SegmentKind& kind) : walk_(file), kind_(kind) {
        place_.file_size = file.size();
    }

    Result<SegmentPlace> run() {
        for (;;) {
            place_.segments_end = walk_.position();
            const Result<bool> goes_on = step();
            const bool is_over = goes_on ? !*goes_on : is_placed_ && is_damage(goes_on.error());
            if (is_over)
                return std::move(place_);
            VELL_TRY(goes_on);
        }
    }

  private:
    static bool is_damage(ErrorCode code) {
        return code == ErrorCode::EndOfFile || code == ErrorCode::SegmentTooShort;
    }

    // Whether there are more segments behind the next one.
    Result<bool> step() {
        const jpeg::Marker marker = VELL_TRY(coded(walk_.next()));
        if (marker.code == SegmentMarker::Sos && !is_placed_)
            return Failure{ErrorCode::WrongImageKind};
        const bool is_end = jpeg::ends_segments(marker.code);
        if ((is_end || jpeg::is_start_of_frame(marker.code)) && !is_placed_)
            put_before(marker);
        if (is_end)
            return false;
        const Segment segment = VELL_TRY(segment_of(walk_, marker));
        VELL_TRY(note(segment));
        return true;
    }

    void put_before(const jpeg::Marker& marker) {
        is_placed_ = true;
        place_.start = place_.end = marker.start;
        place_.can_be_added = marker.code != SegmentMarker::Eoi;
    }

    Result<void> note(const Segment& segment) {
        if (VELL_TRY(is_of_kind(segment, kind_))) {
            if (!kind_.is_single) {
                place_.dropped += segment.end() - segment.start;
            } else if (place_.start == place_.end) {
                is_placed_ = true;
                place_.start = segment.start;
                place_.end = segment.end();
                place_.content = VELL_TRY(content_behind(segment, kind_.identifier));
            }
            return {};
        }
        constexpr std::string_view identifier = jpeg::multi_picture_identifier;
        if (place_.index || segment.marker != SegmentMarker::App2 ||
            !VELL_TRY(coded(segment.begins_with(identifier))))
            return {};
        std::string bytes = VELL_TRY(content_behind(segment, identifier));
        place_.index = SegmentPlace::Index{segment.content_start + identifier.size(),
                                           std::move(bytes), place_.dropped};
        return {};
    }

    static Result<std::string> content_behind(const Segment& segment, std::string_view identifier) {
        Window content = segment.content.from(identifier.size());
        return coded(content.read_bytes(content.size()));
    }

    jpeg::SegmentWalk walk_;
    const SegmentKind& kind_;
    SegmentPlace place_;
    bool is_placed_ = false;
};

class SegmentCopier {
  public:
    SegmentCopier(BufferedReader& from, files::File& to, const SegmentRewrite& rewrite)
        : from_(from), to_(to), kind_(rewrite.kind), place_(rewrite.place),
          content_(rewrite.content) {}

    Result<void> run() {
        VELL_TRY(copy_kept(0, place_.start));
        if (content_)
            VELL_TRY(write_segment(*content_));
        VELL_TRY(copy_kept(place_.end, place_.segments_end));
        VELL_TRY(copy_range(std::max(place_.end, place_.segments_end), place_.file_size));
        return writer_.flush(to_);
    }

  private:
    Result<void> copy_kept(std::uint64_t start, std::uint64_t end) {
        return kind_.is_single ? copy_range(start, end) : copy_without_kind(start, end);
    }

    Result<void> copy_range(std::uint64_t start, std::uint64_t end) {
        if (start >= end)
            return {};
        std::vector<char> buffer(
            static_cast<std::size_t>(std::min<std::uint64_t>(end - start, files::block_size)));
        from_.seek(start);
        while (from_.position() < end) {
            const std::uint64_t position = from_.position();
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(end - position, buffer.size()));
            VELL_TRY(from_.read_exactly({buffer.data(), count}));
            put_index(position, {buffer.data(), count});
            VELL_TRY(writer_.write(to_, {buffer.data(), count}));
        }
        return {};
    }

    // What of the index lies in the bytes from that position on is replaced.
    void put_index(std::uint64_t position, std::span<char> bytes) const {
        if (!place_.index)
            return;
        const std::uint64_t start = std::max(place_.index->start, position);
        const std::uint64_t end =
            std::min(place_.index->start + place_.index->bytes.size(), position + bytes.size());
        if (start < end)
            place_.index->bytes.copy(bytes.data() + (start - position), end - start,
                                     start - place_.index->start);
    }

    // Copies without the segments of the kind; one begins at `start`, or SOI does.
    Result<void> copy_without_kind(std::uint64_t start, std::uint64_t end) {
        std::uint64_t copied = start;
        jpeg::SegmentWalk walk(Window(from_), std::max(start, jpeg::marker_size));
        while (walk.position() < end) {
            const jpeg::Marker marker = VELL_TRY(coded(walk.next()));
            if (marker.start >= end)
                break;
            const Segment segment = VELL_TRY(segment_of(walk, marker));
            if (!VELL_TRY(is_of_kind(segment, kind_)))
                continue;
            VELL_TRY(copy_range(copied, segment.start));
            copied = segment.end();
        }
        return copy_range(copied, end);
    }

    Result<void> write_segment(std::string_view content) {
        std::string header{static_cast<char>(jpeg::marker_prefix), static_cast<char>(kind_.marker)};
        append_integer<std::uint16_t>(header,
                                      static_cast<std::uint16_t>(jpeg::length_size +
                                                                 kind_.identifier.size() +
                                                                 content.size()),
                                      ByteOrder::Big);
        header += kind_.identifier;
        VELL_TRY(writer_.write(to_, header));
        return writer_.write(to_, content);
    }

    BufferedReader& from_;
    files::File& to_;
    files::BlockWriter writer_;
    const SegmentKind& kind_;
    const SegmentPlace& place_;
    const std::optional<std::string>& content_;
};

// What goes in at a place less what goes out there.
std::int64_t growth(const SegmentRewrite& rewrite) {
    const std::size_t added = rewrite.content
                                  ? jpeg::marker_size + jpeg::length_size +
                                        rewrite.kind.identifier.size() + rewrite.content->size()
                                  : 0;
    return static_cast<std::int64_t>(added) -
           static_cast<std::int64_t>(rewrite.place.end - rewrite.place.start);
}

} // namespace

Result<SegmentPlace> find_segment_place(BufferedReader& file, const SegmentKind& kind) {
    const Window window(file);
    Window start = window;
    if (formats::format_of(VELL_TRY(coded(start.read_bytes(jpeg::marker_size)))) !=
        formats::Format::Jpeg)
        return Failure{ErrorCode::NotAJpeg};
    return PlaceSearch(window, kind).run();
}

Result<SegmentRewrite> plan_rewrite(SegmentKind kind, SegmentPlace place,
                                    std::optional<std::string> content) {
    if (!place.can_be_added && place.end == place.start)
        content.reset();
    SegmentRewrite rewrite{std::move(kind), std::move(place), std::move(content)};
    auto& index = rewrite.place.index;
    if (!index)
        return rewrite;
    const std::int64_t whole = growth(rewrite) - static_cast<std::int64_t>(rewrite.place.dropped);
    const std::int64_t before_index = (rewrite.place.start < index->start ? growth(rewrite) : 0) -
                                      static_cast<std::int64_t>(index->dropped_before);
    index->bytes = VELL_TRY(shifted_index(index->bytes, {.header = index->start,
                                                         .scan = rewrite.place.segments_end,
                                                         .offsets = whole - before_index,
                                                         .first_size = whole}));
    return rewrite;
}

Result<void> copy_with_segment(files::File& from, files::File& to, const SegmentRewrite& rewrite) {
    BufferedReader reader = VELL_TRY(BufferedReader::over(from));
    if (reader.size() != rewrite.place.file_size)
        return Failure{ErrorCode::Busy}; // somebody else has changed it in between
    return SegmentCopier(reader, to, rewrite).run();
}

} // namespace vell::metadata
