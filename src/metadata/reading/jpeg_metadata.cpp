#include "src/metadata/reading/jpeg_metadata.h"

#include "src/base/number_text.h"
#include "src/formats/icc/profile.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/recognition.h"
#include "src/metadata/faults.h"
#include "src/metadata/icc/icc_profile.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/reading/xmp.h"

#include <algorithm>
#include <string>

namespace vell::metadata {
namespace {

using files::BufferedReader;

namespace jpeg = formats::jpeg;
using formats::Window;
using jpeg::SegmentMarker;

class JpegWalk {
  public:
    JpegWalk(const Window& file, const MetadataRequest& request, MetadataText& text)
        : walk_(file), request_(request), text_(text),
          wants_tags_(request.exif.want_exif || request.exif.want_gps) {}

    Result<void> run();

  private:
    int wanted_items() const;
    Result<void> treat(const jpeg::Segment& segment);
    Result<void> read_app1(Window content);
    Result<void> read_app2(Window content);
    Result<void> begin_profile(std::uint8_t chunk_count, Window data);
    Result<void> read_comment(Window content);

    jpeg::SegmentWalk walk_;
    const MetadataRequest& request_;
    MetadataText& text_;
    bool wants_tags_;
    int found_ = 0;
    bool app1_taken_ = false;
    std::string profile_;            // as assembled so far
    std::uint64_t profile_size_ = 0; // as announced by the first chunk
};

Result<void> JpegWalk::run() {
    const int wanted = wanted_items();
    while (found_ < wanted) {
        const auto marker = walk_.next();
        // A file cut off behind what it was asked for has answered.
        if (!marker && marker.error().damage == formats::Damage::CutOff && found_ > 0)
            return {};
        const SegmentMarker code = VELL_TRY(coded(marker)).code;
        if (jpeg::ends_segments(code))
            break;
        if (jpeg::stands_alone(code) && code != SegmentMarker::Tem)
            continue;
        const auto segment = VELL_TRY(coded(walk_.segment_of(*marker)));
        VELL_TRY(treat(segment));
    }
    if (found_ == 0)
        return Failure{ErrorCode::NothingFound};
    return {};
}

int JpegWalk::wanted_items() const {
    return (request_.icc != IccSelector::None) + request_.want_comment + request_.exif.want_exif +
           request_.exif.want_xmp + request_.exif.want_gps;
}

Result<void> JpegWalk::treat(const jpeg::Segment& segment) {
    const SegmentMarker marker = segment.marker;
    const bool is_comment = marker == SegmentMarker::Com || marker == SegmentMarker::App12;
    const bool is_app1 = marker == SegmentMarker::App1;
    const bool is_app2 = marker == SegmentMarker::App2;
    const bool wants_app1 = (wants_tags_ || request_.exif.want_xmp) && !app1_taken_;
    if (!(is_app1 && wants_app1) && !(is_app2 && request_.icc != IccSelector::None) &&
        !(is_comment && request_.want_comment))
        return {};
    if (segment.is_too_short() || (is_comment && segment.content.announced() == 0))
        return Failure{ErrorCode::SegmentTooShort};
    if (is_app1)
        return read_app1(segment.content);
    if (is_app2)
        return read_app2(segment.content);
    VELL_TRY(read_comment(segment.content));
    found_ += marker == SegmentMarker::Com; // what stands in APP12 is a welcome extra
    return {};
}

// The first Exif block, or the first XMP packet where it alone is wanted. An APP1 segment of
// another kind is passed over.
Result<void> JpegWalk::read_app1(Window content) {
    if (wants_tags_) {
        if (VELL_TRY(coded(content.read_bytes(jpeg::exif_identifier.size()))) !=
            jpeg::exif_identifier)
            return {};
        const std::string block = VELL_TRY(coded(content.read_rest(), ErrorCode::ShortRead));
        app1_taken_ = true;
        ++found_;
        return read_tags(block, request_.exif, request_.source, text_);
    }
    const Result<void> packet = read_app1_xmp(content, request_.source, text_);
    if (!packet && packet.error() == ErrorCode::NotXmp)
        return {};
    app1_taken_ = true;
    ++found_;
    return packet;
}

// Chunks are put together as they come, whatever their numbers say; the last number ends the
// profile. Chunks without a profile's header, or beyond its size, are passed over.
Result<void> JpegWalk::read_app2(Window content) {
    constexpr std::uint64_t data_start = jpeg::icc_identifier.size() + jpeg::IccChunkHeader::size;
    if (VELL_TRY(coded(content.read_bytes(jpeg::icc_identifier.size()))) != jpeg::icc_identifier ||
        content.announced() < data_start + formats::icc::Header::size)
        return {};
    const auto chunk = VELL_TRY(coded(content.read_record<jpeg::IccChunkHeader>()));
    if (chunk.number == 1)
        VELL_TRY(begin_profile(chunk.count, content));
    if (profile_.size() + content.announced() - data_start > profile_size_)
        return {};
    profile_ += VELL_TRY(coded(content.read_rest(), ErrorCode::ShortRead));
    if (chunk.number != chunk.count)
        return {};
    ++found_;
    return describe_icc_profile(profile_, request_, text_);
}

Result<void> JpegWalk::begin_profile(std::uint8_t chunk_count, Window data) {
    const bool verbose =
        request_.icc == IccSelector::Description && request_.verbose_icc && !request_.icc_as_xml;
    if (verbose) {
        text_.append("ICC chunk count: ");
        text_.append(to_text(std::uint64_t{chunk_count}));
        text_.append("\r");
    }
    profile_.clear();
    profile_size_ = data.announced() - data.position();
    if (chunk_count < 2)
        return {};
    if (verbose)
        text_.append("ICC_MULTIPLE_chunks\r");
    const auto announced = VELL_TRY(coded(data.read_integer<std::uint32_t>(ByteOrder::Big)));
    profile_size_ = std::min<std::uint64_t>(announced, formats::longest_block);
    return {};
}

Result<void> JpegWalk::read_comment(Window content) {
    if (text_.size() + content.announced() > formats::longest_block)
        return Failure{ErrorCode::ResourceTooLarge};
    const std::string comment = VELL_TRY(coded(content.read_rest(), ErrorCode::ShortRead));
    text_.append("\r##JCOM\r");
    text_.append(comment, request_.source);
    text_.append("\r##END ");
    return {};
}

} // namespace

Result<void> read_jpeg_segments(BufferedReader& file, const MetadataRequest& request,
                                MetadataText& text) {
    const Window window(file);
    Window start = window;
    if (formats::format_of(VELL_TRY(coded(start.read_bytes(jpeg::marker_size)))) !=
        formats::Format::Jpeg)
        return Failure{ErrorCode::NotAJpeg};
    return JpegWalk(window, request, text).run();
}

} // namespace vell::metadata
