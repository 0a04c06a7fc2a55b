// Copies a JPEG file with one of its metadata segments replaced (ITU-T T.81, annex B). Everything
// else, the compressed image above all, keeps its bytes; but for the index of a file with several
// pictures, whose offsets are corrected where pictures move.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/jpeg/segments.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// Segments that are told by their marker and what they begin with.
struct SegmentKind {
    formats::jpeg::SegmentMarker marker;
    std::string identifier; // with the zero bytes at its end
    bool is_single;         // the first one is replaced; otherwise all of them are
};

// Where in a file a segment comes to stand: in the place of one before the scan, otherwise before
// the frame.
struct SegmentPlace {
    std::uint64_t file_size = 0;
    std::uint64_t start = 0;  // of the segment that is replaced, or of the frame
    std::uint64_t end = 0;    // where copying goes on; `start` where nothing is replaced
    bool can_be_added = true; // not where the image ends before any frame
    std::string content;      // of the segment that is replaced, behind the identifier

    std::uint64_t segments_end = 0; // where the scan begins, or what cannot be read
    std::uint64_t dropped = 0;      // bytes of all segments of a kind that is not single

    // Of the first picture's segment with an index of several.
    struct Index {
        std::uint64_t start;
        std::string bytes;
        std::uint64_t dropped_before;
    };
    std::optional<Index> index = {};

    // Whether the file has a segment of the kind.
    bool is_there() const { return end > start || dropped > 0; }
};

// Walks the segments up to the scan. NotAJpeg, SegmentTooShort, EndOfFile, and WrongImageKind for a
// scan before any frame; what is wrong behind the place ends the walk.
Result<SegmentPlace> find_segment_place(files::BufferedReader& file, const SegmentKind& kind);

// A copy that is to be made.
struct SegmentRewrite {
    SegmentKind kind;
    SegmentPlace place; // with the index as it will be
    std::optional<std::string> content;
};

// Prepares a copy with a segment of that content; nullopt for none. The content with its identifier
// is no longer than a payload. ResourceTooLarge when a picture would stand beyond 4 GiB.
Result<SegmentRewrite> plan_rewrite(SegmentKind kind, SegmentPlace place,
                                    std::optional<std::string> content);

// Writes the copy of `from`, which stands at its start.
Result<void> copy_with_segment(files::File& from, files::File& to, const SegmentRewrite& rewrite);

} // namespace vell::metadata
