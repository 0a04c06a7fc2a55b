// The records in the boxes of a movie (ISO/IEC 14496-12, section 8; QuickTime File Format, "Movie
// Atoms"), behind the version and flags of their full boxes.
#pragma once

#include "src/formats/isobmff/boxes.h"

#include <array>
#include <cstdint>
#include <tuple>

namespace vell::formats::isobmff {

// Numbers with 16 bits, or 30, behind the point.
constexpr double from_16_16(std::uint32_t fixed) {
    return fixed / 65536.0;
}
constexpr double from_signed_16_16(std::int32_t fixed) {
    return fixed / 65536.0;
}

// "ftyp" (4.3); the compatible brands follow.
struct FileTypeRecord {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    FourCc major_brand{};
    std::uint32_t minor_version = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &FileTypeRecord::major_brand},
                          Field{4, &FileTypeRecord::minor_version}};
    }
};

// The first fields of "mvhd" (8.2.2) and "mdhd" (8.4.2): seconds since 1904 in UTC, and a duration
// in units of which the time scale tells how many are a second. Version 1 has wider ones.
template <typename Integer>
struct TimesRecord {
    static constexpr std::size_t size = 3 * sizeof(Integer) + 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    Integer creation_time = 0;
    Integer modification_time = 0;
    std::uint32_t timescale = 0;
    Integer duration = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &TimesRecord::creation_time},
                          Field{sizeof(Integer), &TimesRecord::modification_time},
                          Field{2 * sizeof(Integer), &TimesRecord::timescale},
                          Field{2 * sizeof(Integer) + 4, &TimesRecord::duration}};
    }
};

// The first fields of "tkhd" (8.3.2); the duration is in units of the movie's time scale.
template <typename Integer>
struct TrackTimesRecord {
    static constexpr std::size_t size = 3 * sizeof(Integer) + 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    Integer creation_time = 0;
    Integer modification_time = 0;
    std::uint32_t track_id = 0;
    Integer duration = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &TrackTimesRecord::creation_time},
                          Field{sizeof(Integer), &TrackTimesRecord::modification_time},
                          Field{2 * sizeof(Integer), &TrackTimesRecord::track_id},
                          Field{2 * sizeof(Integer) + 8, &TrackTimesRecord::duration}};
    }
};
inline constexpr std::uint32_t track_enabled = 1; // in the flags of "tkhd"

// The other fields of "tkhd". Of the matrix, a, b, c, d, x and y have 16 bits behind the point, u,
// v and w have 30.
struct TrackShapeRecord {
    static constexpr std::size_t size = 60;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::int16_t layer = 0;
    std::uint16_t volume = 0;             // 8 bits behind the point
    std::array<std::int32_t, 9> matrix{}; // a, b, u, c, d, v, x, y, w
    std::uint32_t width = 0;              // 16 bits behind the point
    std::uint32_t height = 0;

    static constexpr auto fields() {
        return std::tuple{Field{8, &TrackShapeRecord::layer}, Field{12, &TrackShapeRecord::volume},
                          Field{16, &TrackShapeRecord::matrix}, Field{52, &TrackShapeRecord::width},
                          Field{56, &TrackShapeRecord::height}};
    }
};

// "hdlr" (8.4.3). In QuickTime files the first field says whether it is a media or a data handler;
// the name that follows is counted there and ends with a zero byte elsewhere.
struct HandlerRecord {
    static constexpr std::size_t size = 20;
    static constexpr ByteOrder order = ByteOrder::Big;

    FourCc component_type{};
    FourCc handler_type{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &HandlerRecord::component_type},
                          Field{4, &HandlerRecord::handler_type}};
    }
};

// What sample entries of pictures begin with (12.1.3), behind their data reference.
struct VisualEntryRecord {
    static constexpr std::size_t size = 70;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint32_t horizontal_resolution = 0; // dots per inch, 16 bits behind the point
    std::uint32_t vertical_resolution = 0;
    std::array<char, 32> compressor_name{}; // its first byte counts the others
    std::uint16_t depth = 0;

    static constexpr auto fields() {
        return std::tuple{Field{16, &VisualEntryRecord::width},
                          Field{18, &VisualEntryRecord::height},
                          Field{20, &VisualEntryRecord::horizontal_resolution},
                          Field{24, &VisualEntryRecord::vertical_resolution},
                          Field{34, &VisualEntryRecord::compressor_name},
                          Field{66, &VisualEntryRecord::depth}};
    }
};

// What sample entries of sound begin with (12.2.3), behind their data reference.
struct AudioEntryRecord {
    static constexpr std::size_t size = 20;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint16_t version = 0; // 1 and 2 are QuickTime's
    std::uint16_t channel_count = 0;
    std::uint16_t sample_size = 0;
    std::uint32_t sample_rate = 0; // 16 bits behind the point

    static constexpr auto fields() {
        return std::tuple{
            Field{0, &AudioEntryRecord::version}, Field{8, &AudioEntryRecord::channel_count},
            Field{10, &AudioEntryRecord::sample_size}, Field{16, &AudioEntryRecord::sample_rate}};
    }
};
// Bytes that QuickTime's version 1 adds to it.
inline constexpr std::uint64_t audio_entry_1_size = 16;

// What QuickTime's version 2 adds to it (QuickTime File Format, "Sound Sample Description (Version
// 2)").
struct AudioEntry2Record {
    static constexpr std::size_t size = 36;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t struct_size = 0; // with all that stands before
    std::uint64_t sample_rate = 0; // the bits of a double
    std::uint32_t channel_count = 0;
    std::uint32_t bits_per_channel = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &AudioEntry2Record::struct_size},
                          Field{4, &AudioEntry2Record::sample_rate},
                          Field{12, &AudioEntry2Record::channel_count},
                          Field{20, &AudioEntry2Record::bits_per_channel}};
    }
};

// A "tmcd" sample entry (QuickTime File Format, "Timecode Sample Description"), behind its data
// reference.
struct TimeCodeEntryRecord {
    static constexpr std::size_t size = 17;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint32_t drop_frame = 1;
    static constexpr std::uint32_t wraps_at_24_hours = 2;
    static constexpr std::uint32_t negative_times_allowed = 4;
    static constexpr std::uint32_t counter = 8;

    std::uint32_t flags = 0;
    std::uint32_t timescale = 0;
    std::uint32_t frame_duration = 0;
    std::uint8_t frames_per_second = 0; // of the code, rounded up

    static constexpr auto fields() {
        return std::tuple{Field{4, &TimeCodeEntryRecord::flags},
                          Field{8, &TimeCodeEntryRecord::timescale},
                          Field{12, &TimeCodeEntryRecord::frame_duration},
                          Field{16, &TimeCodeEntryRecord::frames_per_second}};
    }
};

// "btrt" (8.5.2).
struct BitRateRecord {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t buffer_size = 0;
    std::uint32_t maximum = 0; // bits per second
    std::uint32_t average = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &BitRateRecord::buffer_size}, Field{4, &BitRateRecord::maximum},
                          Field{8, &BitRateRecord::average}};
    }
};

// An entry of "stts" (8.6.1.2).
struct TimeToSampleEntry {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t sample_count = 0;
    std::uint32_t sample_delta = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &TimeToSampleEntry::sample_count},
                          Field{4, &TimeToSampleEntry::sample_delta}};
    }
};

// "trex" (8.8.3).
struct TrackExtendsRecord {
    static constexpr std::size_t size = 20;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t track_id = 0;
    std::uint32_t default_sample_duration = 0;
    std::uint32_t default_sample_size = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &TrackExtendsRecord::track_id},
                          Field{8, &TrackExtendsRecord::default_sample_duration},
                          Field{12, &TrackExtendsRecord::default_sample_size}};
    }
};

// Which fields "tfhd" (8.8.7) and "trun" (8.8.8) have.
namespace fragment_flag {
inline constexpr std::uint32_t base_data_offset = 0x1;
inline constexpr std::uint32_t sample_description = 0x2;
inline constexpr std::uint32_t default_duration = 0x8;
inline constexpr std::uint32_t default_size = 0x10;
inline constexpr std::uint32_t data_offset = 0x1;
inline constexpr std::uint32_t first_sample_flags = 0x4;
inline constexpr std::uint32_t sample_duration = 0x100;
inline constexpr std::uint32_t sample_size = 0x200;
inline constexpr std::uint32_t sample_flags = 0x400;
inline constexpr std::uint32_t composition_offset = 0x800;
} // namespace fragment_flag

} // namespace vell::formats::isobmff
