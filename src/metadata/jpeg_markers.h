// Markers of JPEG streams (ITU-T T.81, table B.1): 0xFF, any number of times, and a code.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"

#include <cstdint>

namespace vell::metadata {

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

struct Marker {
    SegmentMarker code;
    std::uint64_t start; // of its first 0xFF
};

// The next marker at the file's position or behind it; the position is then behind its code.
Result<Marker> next_marker(files::BufferedReader& file);

} // namespace vell::metadata
