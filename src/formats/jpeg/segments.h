// The segments of a JPEG stream (ITU-T T.81, annex B), the one walk over them.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <string_view>
#include <tuple>

namespace vell::formats::jpeg {

// Markers (table B.1): 0xFF, any number of times, and a code.
inline constexpr std::uint8_t marker_prefix = 0xFF;

enum class SegmentMarker : std::uint8_t {
    Tem = 0x01,
    Sof0 = 0xC0,
    Sof1 = 0xC1,
    Sof2 = 0xC2,
    Sof3 = 0xC3,
    Dht = 0xC4,
    Sof5 = 0xC5,
    Sof6 = 0xC6,
    Sof7 = 0xC7,
    Jpg = 0xC8,
    Sof9 = 0xC9,
    Sof10 = 0xCA,
    Sof11 = 0xCB,
    Dac = 0xCC,
    Sof13 = 0xCD,
    Sof14 = 0xCE,
    Sof15 = 0xCF,
    Rst0 = 0xD0,
    Rst7 = 0xD7,
    Soi = 0xD8,
    Eoi = 0xD9,
    Sos = 0xDA,
    Dqt = 0xDB,
    Dnl = 0xDC,
    Dri = 0xDD,
    App0 = 0xE0,
    App1 = 0xE1,
    App2 = 0xE2,
    App12 = 0xEC,
    App13 = 0xED,
    App14 = 0xEE,
    Com = 0xFE,
};

// Frame headers; their range also holds DHT, JPG and DAC.
constexpr bool is_start_of_frame(SegmentMarker marker) {
    return marker >= SegmentMarker::Sof0 && marker <= SegmentMarker::Sof15 &&
           marker != SegmentMarker::Dht && marker != SegmentMarker::Jpg &&
           marker != SegmentMarker::Dac;
}

// Markers without a segment behind them.
constexpr bool stands_alone(SegmentMarker marker) {
    return (marker >= SegmentMarker::Rst0 && marker <= SegmentMarker::Eoi) ||
           marker == SegmentMarker::Tem;
}

// Behind these no more segments come that could be walked.
constexpr bool ends_segments(SegmentMarker marker) {
    return marker == SegmentMarker::Sos || marker == SegmentMarker::Eoi;
}

inline constexpr std::uint64_t marker_size = 2;
inline constexpr std::string_view start_of_image = "\xFF\xD8";
inline constexpr std::uint64_t length_size = 2; // of the length field, which counts itself
inline constexpr std::size_t longest_payload = 0xFFFF - length_size;

// What segments of applications begin with.
inline constexpr std::string_view exif_identifier{"Exif\0\0", 6};
inline constexpr std::string_view icc_identifier{"ICC_PROFILE\0", 12};
inline constexpr std::string_view multi_picture_identifier{"MPF\0", 4};
inline constexpr std::string_view photoshop_identifier{"Photoshop 3.0\0", 14};

// Frame header (B.2.2), without its length and the parameters of the components.
struct FrameHeader {
    static constexpr std::size_t size = 6;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint8_t sample_precision = 0;
    std::uint16_t lines = 0;
    std::uint16_t samples_per_line = 0;
    std::uint8_t components = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &FrameHeader::sample_precision}, Field{1, &FrameHeader::lines},
                          Field{3, &FrameHeader::samples_per_line},
                          Field{5, &FrameHeader::components}};
    }
};

// The APP0 segment of JFIF 1.02, without its length and its thumbnail.
struct JfifHeader {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::string_view name{"JFIF\0", 5};

    std::array<char, 5> identifier{};
    std::uint8_t units = 0; // 1: per inch, 2: per centimetre; 0 for an aspect ratio
    std::uint16_t horizontal_density = 0;
    std::uint16_t vertical_density = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &JfifHeader::identifier}, Field{7, &JfifHeader::units},
                          Field{8, &JfifHeader::horizontal_density},
                          Field{10, &JfifHeader::vertical_density}};
    }
};

// What the profile's chunks in APP2 segments have behind their identifier (ICC.1:2010, B.4).
struct IccChunkHeader {
    static constexpr std::size_t size = 2;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint8_t number = 0; // from 1 on
    std::uint8_t count = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &IccChunkHeader::number}, Field{1, &IccChunkHeader::count}};
    }
};

// Whether a stream begins where the window does.
Read<bool> begins_stream(Window window);

struct Marker {
    SegmentMarker code;
    std::uint64_t start; // of its first 0xFF
};

struct Segment {
    SegmentMarker marker;
    std::uint64_t start; // of its marker's first 0xFF
    std::uint16_t length;
    std::uint64_t content_start;
    Window content;

    // The length counts its own two bytes.
    bool is_too_short() const { return length < length_size; }
    std::uint64_t end() const { return content_start + content.announced(); }
    Read<bool> begins_with(std::string_view identifier) const;
};

class SegmentWalk {
  public:
    // Goes on at that place of the stream, otherwise behind SOI.
    explicit SegmentWalk(const Window& file, std::uint64_t from = marker_size) : file_(file) {
        file_.seek(from);
    }

    // Where the next marker is looked for.
    std::uint64_t position() const { return file_.position(); }
    // The next marker; what stands before it is passed over. CutOff when there is none, or so much
    // has been passed that this is no such stream.
    Read<Marker> next();
    // The segment behind that marker, which came last; the walk goes on at its end. One that is too
    // short has no content. CutOff when not even its length is there.
    Read<Segment> segment_of(const Marker& marker);

    // The same without reading a length: its content is empty, and ends behind the marker.
    Segment without_segment(const Marker& marker) const {
        return {marker.code, marker.start, length_size, position(), file_.part(position(), 0)};
    }

  private:
    // Bytes of gaps that a walk reads: no writer leaves so many. Each byte of a marker counts for
    // several, since it is read by itself.
    static constexpr std::uint64_t longest_gaps = 4U << 20U;
    static constexpr std::uint64_t cost_of_marker = 16;

    Read<void> pass_prefix();
    Read<void> spend(std::uint64_t count);

    Window file_;
    std::uint64_t room_ = longest_gaps;
};

} // namespace vell::formats::jpeg
