// The segments of a JPEG file, with any switches: what a small buffer makes of them is what a large
// one does.
//
// First line: the switches; the rest is the file.
#include "fuzz/input.h"
#include "src/metadata/reading/jpeg_metadata.h"

#include <algorithm>
#include <string>

namespace vell::jpeg_walk_fuzz {
namespace {

using namespace vell::metadata;

struct Reading {
    int code = 0;
    std::string text;
    bool operator==(const Reading&) const = default;
};

Reading read(std::string_view bytes, const MetadataRequest& request, std::size_t buffer_size) {
    const auto file = files::memory_file(std::string(bytes));
    auto reader = *files::BufferedReader::over(*file, buffer_size);
    MetadataText text;
    const Result<void> done = read_jpeg_segments(reader, request, text);
    Reading reading;
    if (!done)
        reading.code = number(done.error());
    for (const MetadataText::Piece& piece : text.pieces())
        reading.text += piece.bytes;
    return reading;
}

} // namespace

FUZZ_TARGET(jpeg_walk) {
    std::string_view input = fuzz::as_text(data, size);
    const auto request = metadata_request_of(params::SwitchSet(fuzz::take_line(input)));
    if (!request)
        return 0;
    const Reading reading = read(input, *request, files::BufferedReader::default_buffer);
    FUZZ_CHECK(reading == read(input, *request, 3));
    FUZZ_CHECK((reading.code == number(ErrorCode::NotAJpeg)) == !input.starts_with("\xFF\xD8"));
    const bool wants_tags = request->exif.want_exif || request->exif.want_gps;
    if (!wants_tags && request->icc == IccSelector::None) // bytes as they stand, with a few words
        FUZZ_CHECK(reading.text.size() <= 6 * input.size());
    return 0;
}

} // namespace vell::jpeg_walk_fuzz
