#include "src/metadata/jpeg_segments.h"

#include "src/base/number_text.h"
#include "src/metadata/icc_profile.h"
#include "src/metadata/jpeg_markers.h"
#include "src/metadata/read_whole.h"
#include "src/metadata/tag_reader.h"
#include "src/metadata/xmp.h"

#include <algorithm>
#include <vector>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::string_view exif_identifier{"Exif\0\0", 6};
constexpr std::string_view icc_identifier{"ICC_PROFILE\0", 12};
constexpr std::uint64_t icc_chunk_header = icc_identifier.size() + 2; // chunk number, chunk count
constexpr std::uint64_t icc_profile_header = 128;

class JpegWalk {
  public:
    JpegWalk(BufferedReader& file, const MetadataRequest& request, MetadataText& text)
        : file_(file), request_(request), text_(text),
          wants_tags_(request.exif.want_exif || request.exif.want_gps) {}

    Result<void> run();

  private:
    int wanted_items() const;
    Result<void> treat(SegmentMarker marker);
    Result<void> read_app1(std::uint64_t length);
    Result<void> read_app2(std::uint64_t length);
    Result<void> begin_profile(std::uint8_t chunk_count, std::uint64_t data_length);
    Result<void> read_comment(std::uint64_t length);

    BufferedReader& file_;
    const MetadataRequest& request_;
    MetadataText& text_;
    bool wants_tags_;
    int found_ = 0;
    bool app1_taken_ = false;
    std::string profile_;            // as assembled so far
    std::uint64_t profile_size_ = 0; // as announced by the first chunk
};

Result<void> JpegWalk::run() {
    const std::string start = VELL_TRY(file_.read_bytes(2));
    if (start != "\xFF\xD8")
        return Failure{ErrorCode::NotAJpeg};
    const int wanted = wanted_items();
    while (found_ < wanted) {
        const Result<Marker> marker = next_marker(file_);
        if (!marker) {
            // A file cut off behind what it was asked for has answered.
            if (marker.error() == ErrorCode::EndOfFile && found_ > 0)
                return {};
            return Failure{marker.error()};
        }
        if (marker->code == SegmentMarker::Eoi || marker->code == SegmentMarker::Sos)
            break;
        VELL_TRY(treat(marker->code));
    }
    if (found_ == 0)
        return Failure{ErrorCode::NothingFound};
    return {};
}

int JpegWalk::wanted_items() const {
    return (request_.icc != IccSelector::None) + request_.want_comment + request_.exif.want_exif +
           request_.exif.want_xmp + request_.exif.want_gps;
}

Result<void> JpegWalk::treat(SegmentMarker marker) {
    if (stands_alone(marker) && marker != SegmentMarker::Tem)
        return {};
    const bool is_comment = marker == SegmentMarker::Com || marker == SegmentMarker::App12;
    const bool wants_app1 = (wants_tags_ || request_.exif.want_xmp) && !app1_taken_;
    const bool read = (marker == SegmentMarker::App1 && wants_app1) ||
                      (marker == SegmentMarker::App2 && request_.icc != IccSelector::None) ||
                      (is_comment && request_.want_comment);

    const std::uint64_t length = VELL_TRY(file_.read_integer<std::uint16_t>(ByteOrder::Big));
    const std::uint64_t length_field = 2; // which the length counts too
    const std::uint64_t least = is_comment ? length_field + 1 : length_field;
    if (read && length < least)
        return Failure{ErrorCode::SegmentTooShort};
    const std::uint64_t rest = std::max(length, length_field) - length_field;
    const std::uint64_t end = file_.position() + rest;
    if (read && marker == SegmentMarker::App1)
        VELL_TRY(read_app1(rest));
    else if (read && marker == SegmentMarker::App2)
        VELL_TRY(read_app2(rest));
    else if (read) {
        VELL_TRY(read_comment(rest));
        found_ += marker == SegmentMarker::Com; // what stands in APP12 is a welcome extra
    }
    file_.seek(end);
    return {};
}

// The first Exif block, or the first XMP packet where it alone is wanted. An APP1 segment of
// another kind is passed over.
Result<void> JpegWalk::read_app1(std::uint64_t length) {
    if (wants_tags_) {
        if (VELL_TRY(file_.read_bytes(std::min<std::uint64_t>(length, exif_identifier.size()))) !=
            exif_identifier)
            return {};
        const std::string block = VELL_TRY(read_whole(file_, length - exif_identifier.size()));
        app1_taken_ = true;
        ++found_;
        return read_tags(block, request_.exif, request_.source, text_);
    }
    const Result<void> packet = read_app1_xmp(file_, length, request_.source, text_);
    if (!packet && packet.error() == ErrorCode::NotXmp)
        return {};
    app1_taken_ = true;
    ++found_;
    return packet;
}

// Chunks are put together as they come, whatever their numbers say; the last number ends the
// profile. Chunks without a profile's header, or beyond its size, are passed over.
Result<void> JpegWalk::read_app2(std::uint64_t length) {
    if (VELL_TRY(file_.read_bytes(std::min<std::uint64_t>(length, icc_identifier.size()))) !=
            icc_identifier ||
        length < icc_chunk_header + icc_profile_header)
        return {};
    const std::uint8_t chunk_number = VELL_TRY(file_.read_byte());
    const std::uint8_t chunk_count = VELL_TRY(file_.read_byte());
    const std::uint64_t data_length = length - icc_chunk_header;
    if (chunk_number == 1)
        VELL_TRY(begin_profile(chunk_count, data_length));
    if (profile_.size() + data_length > profile_size_)
        return {};
    profile_ += VELL_TRY(read_whole(file_, data_length));
    if (chunk_number != chunk_count)
        return {};
    ++found_;
    return describe_icc_profile(profile_, request_, text_);
}

Result<void> JpegWalk::begin_profile(std::uint8_t chunk_count, std::uint64_t data_length) {
    const bool verbose =
        request_.icc == IccSelector::Description && request_.verbose_icc && !request_.icc_as_xml;
    if (verbose) {
        text_.append("ICC chunk count: ");
        text_.append(to_text(std::uint64_t{chunk_count}));
        text_.append("\r");
    }
    profile_.clear();
    profile_size_ = data_length;
    if (chunk_count < 2)
        return {};
    if (verbose)
        text_.append("ICC_MULTIPLE_chunks\r");
    const std::uint64_t start = file_.position();
    profile_size_ = VELL_TRY(file_.read_integer<std::uint32_t>(ByteOrder::Big));
    file_.seek(start);
    return {};
}

Result<void> JpegWalk::read_comment(std::uint64_t length) {
    if (text_.size() + length > MetadataText::max_size)
        return Failure{ErrorCode::ResourceTooLarge};
    const std::string comment = VELL_TRY(read_whole(file_, length));
    text_.append("\r##JCOM\r");
    text_.append(comment, request_.source);
    text_.append("\r##END ");
    return {};
}

} // namespace

Result<void> read_jpeg_segments(BufferedReader& file, const MetadataRequest& request,
                                MetadataText& text) {
    file.seek(0);
    return JpegWalk(file, request, text).run();
}

} // namespace vell::metadata
