// The channels and the rate of sound as its decoder is told them. The sample entry has fields for
// both, which writers fill with what they always write: two channels, or rates cut to 16 bits.
#pragma once

#include "src/formats/isobmff/boxes.h"

#include <cstdint>

namespace vell::formats::isobmff {

// 0 where it is not told.
struct SoundFormat {
    std::uint32_t channels = 0;
    std::uint32_t sample_rate = 0; // Hertz
};

// MPEG-4's AudioSpecificConfig (ISO/IEC 14496-3, section 1.6.2.1).
Read<SoundFormat> read_audio_specific_config(Window content);

// Of a box in a sample entry: "alac", "dOps", "dfLa", "dac3", "dec3" or "srat". Absent for others.
Read<SoundFormat> read_sound_format(FourCc type, Window content);

} // namespace vell::formats::isobmff
