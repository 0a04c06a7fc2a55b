#include "src/metadata/jpeg_rewriter.h"

#include "src/base/bytes.h"
#include "src/files/contents/buffered_reader.h"
#include "src/files/contents/rewriting.h"
#include "src/metadata/multi_picture.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::uint64_t marker_size = 2;
constexpr std::uint64_t soi_size = marker_size;
constexpr std::uint64_t length_size = 2; // of the length field, which counts itself
constexpr std::string_view index_identifier{"MPF\0", 4};

struct Segment {
    SegmentMarker marker;
    std::uint64_t start; // of its marker
    std::uint64_t content;
    std::uint64_t end;
};

bool ends_segments(SegmentMarker marker) {
    return marker == SegmentMarker::Sos || marker == SegmentMarker::Eoi;
}

// The marker at the file's position or behind it, its segment's length not read yet.
Result<Segment> next_segment(BufferedReader& file) {
    const auto [marker, start] = VELL_TRY(next_marker(file));
    return Segment{marker, start, file.position(), file.position()};
}

Result<void> read_length(BufferedReader& file, Segment& segment) {
    // TEM has no length either, but is read as if it had one, as in the walk that reads.
    if ((stands_alone(segment.marker) && segment.marker != SegmentMarker::Tem) ||
        ends_segments(segment.marker))
        return {};
    const std::uint64_t length = VELL_TRY(file.read_integer<std::uint16_t>(ByteOrder::Big));
    if (length < length_size)
        return Failure{ErrorCode::SegmentTooShort};
    segment.content = file.position();
    segment.end = segment.content + length - length_size;
    if (segment.end > file.size())
        return Failure{ErrorCode::EndOfFile};
    return {};
}

Result<void> check_start(BufferedReader& file) {
    constexpr auto soi = static_cast<char>(SegmentMarker::Soi);
    char start[2] = {};
    if (VELL_TRY(file.read(start)) < 2 || start[0] != static_cast<char>(marker_prefix) ||
        start[1] != soi)
        return Failure{ErrorCode::NotAJpeg};
    return {};
}

Result<bool> begins_with(BufferedReader& file, const Segment& segment,
                         std::string_view identifier) {
    if (segment.end - segment.content < identifier.size())
        return false;
    file.seek(segment.content);
    return VELL_TRY(file.read_bytes(identifier.size())) == identifier;
}

Result<bool> is_of_kind(BufferedReader& file, const Segment& segment, const SegmentKind& kind) {
    if (segment.marker != kind.marker)
        return false;
    return begins_with(file, segment, kind.identifier);
}

class SegmentWalk {
  public:
    SegmentWalk(BufferedReader& file, const SegmentKind& kind) : file_(file), kind_(kind) {
        place_.file_size = file.size();
    }

    // The file stands behind SOI.
    Result<SegmentPlace> run() {
        for (;;) {
            place_.segments_end = file_.position();
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
        Segment segment = VELL_TRY(next_segment(file_));
        if (segment.marker == SegmentMarker::Sos && !is_placed_)
            return Failure{ErrorCode::WrongImageKind};
        const bool is_end = ends_segments(segment.marker);
        if ((is_end || is_start_of_frame(segment.marker)) && !is_placed_)
            put_before(segment);
        if (is_end)
            return false;
        VELL_TRY(read_length(file_, segment));
        VELL_TRY(note(segment));
        file_.seek(segment.end);
        return true;
    }

    void put_before(const Segment& segment) {
        is_placed_ = true;
        place_.start = place_.end = segment.start;
        place_.can_be_added = segment.marker != SegmentMarker::Eoi;
    }

    Result<void> note(const Segment& segment) {
        const std::uint64_t size = segment.end - segment.content;
        if (VELL_TRY(is_of_kind(file_, segment, kind_))) {
            if (!kind_.is_single) {
                place_.dropped += segment.end - segment.start;
            } else if (place_.start == place_.end) {
                is_placed_ = true;
                place_.start = segment.start;
                place_.end = segment.end;
                place_.content = VELL_TRY(file_.read_bytes(size - kind_.identifier.size()));
            }
            return {};
        }
        if (place_.index || segment.marker != SegmentMarker::App2 ||
            !VELL_TRY(begins_with(file_, segment, index_identifier)))
            return {};
        const std::uint64_t start = file_.position();
        std::string bytes = VELL_TRY(file_.read_bytes(size - index_identifier.size()));
        place_.index = SegmentPlace::Index{start, std::move(bytes), place_.dropped};
        return {};
    }

    BufferedReader& file_;
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
        std::uint64_t position = std::max(start, soi_size);
        while (position < end) {
            from_.seek(position);
            Segment segment = VELL_TRY(next_segment(from_));
            if (segment.start >= end)
                break;
            VELL_TRY(read_length(from_, segment));
            position = segment.end;
            if (!VELL_TRY(is_of_kind(from_, segment, kind_)))
                continue;
            VELL_TRY(copy_range(copied, segment.start));
            copied = segment.end;
        }
        return copy_range(copied, end);
    }

    Result<void> write_segment(std::string_view content) {
        std::string header{static_cast<char>(marker_prefix), static_cast<char>(kind_.marker)};
        append_integer<std::uint16_t>(
            header,
            static_cast<std::uint16_t>(length_size + kind_.identifier.size() + content.size()),
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
    const std::size_t added =
        rewrite.content
            ? marker_size + length_size + rewrite.kind.identifier.size() + rewrite.content->size()
            : 0;
    return static_cast<std::int64_t>(added) -
           static_cast<std::int64_t>(rewrite.place.end - rewrite.place.start);
}

} // namespace

Result<SegmentPlace> find_segment_place(files::File& file, const SegmentKind& kind) {
    BufferedReader reader = VELL_TRY(BufferedReader::over(file));
    VELL_TRY(check_start(reader));
    return SegmentWalk(reader, kind).run();
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
