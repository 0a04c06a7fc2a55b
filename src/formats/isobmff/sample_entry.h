// What "stsd" says of the coding of a track's samples (ISO/IEC 14496-12, section 8.5.2).
#pragma once

#include "src/formats/isobmff/boxes.h"
#include "src/formats/isobmff/records.h"
#include "src/formats/isobmff/sound_format.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vell::formats::isobmff {

struct Picture {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint16_t depth = 0;     // bits of a pixel; 24 for all that is compressed
    std::string compressor_name; // the bytes that the file has
};

// 0 for what is not told.
struct Sound {
    std::uint32_t channels = 0;
    std::uint32_t sample_size = 0; // bits
    double sample_rate = 0;        // Hertz
};

// MPEG-4's decoder configuration (ISO/IEC 14496-1, section 7.2.6.6).
struct DecoderConfig {
    std::uint8_t object_type = 0; // "objectTypeIndication"
    std::uint32_t maximum_bit_rate = 0;
    std::uint32_t average_bit_rate = 0;
    SoundFormat sound; // of "DecoderSpecificInfo", where it is sound
};

struct SampleEntry {
    FourCc format{};
    // Of encrypted samples, the format that they have when they are decrypted ("frma").
    std::optional<FourCc> original_format;
    std::optional<Picture> picture;
    std::optional<Sound> sound;
    std::optional<TimeCodeEntryRecord> time_code;
    std::optional<DecoderConfig> decoder;
    std::optional<std::uint32_t> average_bit_rate; // of "btrt"

    FourCc codec() const { return original_format.value_or(format); }
};

// How a sample entry is built, which only the handler of its media tells.
enum class EntryKind : std::uint8_t { Picture, Sound, TimeCode, Other };
EntryKind entry_kind_of(FourCc handler);

// Where a sample entry's own boxes begin in its content, by the version of its "stsd"; Absent where
// it has none that are known.
Read<Window> boxes_of_entry(Window content, EntryKind kind, std::uint8_t description_version = 0);

// The first entry of "stsd". Absent when there is none.
Read<SampleEntry> read_sample_entry(Window description, FourCc handler);

} // namespace vell::formats::isobmff
