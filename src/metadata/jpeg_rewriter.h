// Copies a JPEG file with one of its metadata segments replaced (ITU-T T.81, annex B). Everything
// else, the compressed image above all, keeps its bytes.
#pragma once

#include "src/base/result.h"
#include "src/files/file_access.h"
#include "src/metadata/jpeg_markers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// A segment's length counts its own two bytes.
inline constexpr std::size_t longest_payload = 65'533;

// Segments that are told by their marker and what they begin with.
struct SegmentKind {
    SegmentMarker marker;
    std::string identifier; // with the zero bytes at its end
    bool is_single;         // the first one is replaced; otherwise all of them are
};

// Where in a file a segment comes to stand.
struct SegmentPlace {
    std::uint64_t file_size = 0;
    std::uint64_t start = 0;  // of the segment that is replaced, or of the frame
    std::uint64_t end = 0;    // where copying goes on; `start` where nothing is replaced
    bool can_be_added = true; // not where the image ends before any frame
    std::string content;      // of the segment that is replaced, behind the identifier
};

// Walks the segments up to the first frame, or to the one to be replaced. NotAJpeg,
// SegmentTooShort, EndOfFile, and WrongImageKind for a scan before any frame.
Result<SegmentPlace> find_segment_place(files::File& file, const SegmentKind& kind);

// Writes a copy of `from`, which stands at its start, with a segment of that content; nullopt for
// none. The content with its identifier is no longer than a payload.
Result<void> copy_with_segment(files::File& from, files::File& to, const SegmentKind& kind,
                               const SegmentPlace& place,
                               const std::optional<std::string>& content);

} // namespace vell::metadata
