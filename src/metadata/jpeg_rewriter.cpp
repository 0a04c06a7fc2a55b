#include "src/metadata/jpeg_rewriter.h"

#include "src/base/bytes.h"
#include "src/files/buffered_reader.h"
#include "src/files/rewriting.h"

#include <algorithm>
#include <vector>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::uint64_t length_size = 2; // of the length field, which counts itself

struct Segment {
    SegmentMarker marker;
    std::uint64_t start; // of its marker
    std::uint64_t content;
    std::uint64_t end;
};

// The segment at the file's position or behind it.
Result<Segment> next_segment(BufferedReader& file) {
    const auto [marker, start] = VELL_TRY(next_marker(file));
    Segment segment{marker, start, file.position(), file.position()};
    // TEM has no length either, but is read as if it had one, as in the walk that reads. The
    // lengths of frames and scans are nobody's business here.
    if ((stands_alone(marker) && marker != SegmentMarker::Tem) || is_start_of_frame(marker) ||
        marker == SegmentMarker::Sos)
        return segment;
    const std::uint64_t length = VELL_TRY(file.read_integer<std::uint16_t>(ByteOrder::Big));
    if (length < length_size)
        return Failure{ErrorCode::SegmentTooShort};
    segment.content = file.position();
    segment.end = segment.content + length - length_size;
    if (segment.end > file.size())
        return Failure{ErrorCode::EndOfFile};
    return segment;
}

Result<void> check_start(BufferedReader& file) {
    constexpr auto soi = static_cast<char>(SegmentMarker::Soi);
    char start[2] = {};
    if (VELL_TRY(file.read(start)) < 2 || start[0] != static_cast<char>(marker_prefix) ||
        start[1] != soi)
        return Failure{ErrorCode::NotAJpeg};
    return {};
}

Result<bool> is_of_kind(BufferedReader& file, const Segment& segment, const SegmentKind& kind) {
    if (segment.marker != kind.marker)
        return false;
    const std::uint64_t length = segment.end - segment.content;
    if (length < kind.identifier.size())
        return false;
    file.seek(segment.content);
    const std::string beginning = VELL_TRY(file.read_bytes(kind.identifier.size()));
    return beginning == kind.identifier;
}

Result<void> copy_range(BufferedReader& from, files::File& to, files::BlockWriter& writer,
                        std::uint64_t start, std::uint64_t end) {
    std::vector<char> buffer(
        static_cast<std::size_t>(std::min<std::uint64_t>(end - start, files::block_size)));
    from.seek(start);
    while (from.position() < end) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(end - from.position(), buffer.size()));
        VELL_TRY(from.read_exactly({buffer.data(), count}));
        VELL_TRY(writer.write(to, {buffer.data(), count}));
    }
    return {};
}

// Copies up to `end` without the segments of that kind.
Result<void> copy_without(BufferedReader& from, files::File& to, files::BlockWriter& writer,
                          const SegmentKind& kind, std::uint64_t end) {
    std::uint64_t copied = 0;
    from.seek(length_size); // SOI
    std::uint64_t position = from.position();
    while (position < end) {
        from.seek(position);
        const Segment segment = VELL_TRY(next_segment(from));
        position = segment.end;
        if (segment.start >= end || !VELL_TRY(is_of_kind(from, segment, kind)))
            continue;
        VELL_TRY(copy_range(from, to, writer, copied, segment.start));
        copied = segment.end;
    }
    return copy_range(from, to, writer, copied, end);
}

Result<void> write_segment(files::File& to, files::BlockWriter& writer, const SegmentKind& kind,
                           std::string_view content) {
    std::string header{static_cast<char>(marker_prefix), static_cast<char>(kind.marker)};
    append_integer<std::uint16_t>(
        header, static_cast<std::uint16_t>(length_size + kind.identifier.size() + content.size()),
        ByteOrder::Big);
    header += kind.identifier;
    VELL_TRY(writer.write(to, header));
    return writer.write(to, content);
}

} // namespace

Result<SegmentPlace> find_segment_place(files::File& file, const SegmentKind& kind) {
    BufferedReader reader = VELL_TRY(BufferedReader::over(file));
    VELL_TRY(check_start(reader));
    SegmentPlace place;
    place.file_size = reader.size();
    for (;;) {
        const Segment segment = VELL_TRY(next_segment(reader));
        if (segment.marker == SegmentMarker::Sos)
            return Failure{ErrorCode::WrongImageKind};
        if (is_start_of_frame(segment.marker) || segment.marker == SegmentMarker::Eoi) {
            place.start = place.end = segment.start;
            place.can_be_added = segment.marker != SegmentMarker::Eoi;
            return place;
        }
        if (kind.is_single && VELL_TRY(is_of_kind(reader, segment, kind))) {
            place.start = segment.start;
            place.end = segment.end;
            place.content =
                VELL_TRY(reader.read_bytes(segment.end - segment.content - kind.identifier.size()));
            return place;
        }
        reader.seek(segment.end);
    }
}

Result<void> copy_with_segment(files::File& from, files::File& to, const SegmentKind& kind,
                               const SegmentPlace& place,
                               const std::optional<std::string>& content) {
    BufferedReader reader = VELL_TRY(BufferedReader::over(from));
    if (reader.size() != place.file_size)
        return Failure{ErrorCode::Busy}; // somebody else has changed it in between
    files::BlockWriter writer;
    if (kind.is_single)
        VELL_TRY(copy_range(reader, to, writer, 0, place.start));
    else
        VELL_TRY(copy_without(reader, to, writer, kind, place.start));
    if (content && (place.can_be_added || place.end > place.start))
        VELL_TRY(write_segment(to, writer, kind, *content));
    VELL_TRY(copy_range(reader, to, writer, place.end, place.file_size));
    return writer.flush(to);
}

} // namespace vell::metadata
