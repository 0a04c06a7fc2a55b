#include "src/formats/isobmff/sound_format.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace vell::formats::isobmff {
namespace {

// Takes bits from the highest of the first byte on; zeros behind the last one.
class BitReader {
  public:
    explicit BitReader(std::string_view bytes) : bytes_(bytes) {}

    std::uint32_t take(unsigned count) {
        std::uint32_t value = 0;
        for (; count > 0; --count, ++position_) {
            const std::size_t byte = position_ / 8;
            const unsigned bits =
                byte < bytes_.size() ? static_cast<unsigned char>(bytes_[byte]) : 0U;
            value = value << 1 | (bits >> (7 - position_ % 8) & 1U);
        }
        return value;
    }
    std::size_t remaining() const {
        return 8 * bytes_.size() - std::min(position_, 8 * bytes_.size());
    }

  private:
    std::string_view bytes_;
    std::size_t position_ = 0; // in bits
};

template <std::size_t count>
std::uint32_t entry_of(const std::array<std::uint32_t, count>& table, std::uint32_t index) {
    return index < count ? table[index] : 0;
}

enum AudioObjectType : std::uint32_t { Sbr = 5, Escape = 31, ParametricStereo = 29 };

std::uint32_t take_object_type(BitReader& bits) {
    const std::uint32_t type = bits.take(5);
    return type == Escape ? 32 + bits.take(6) : type;
}

std::uint32_t take_frequency(BitReader& bits) {
    constexpr std::array<std::uint32_t, 13> frequencies{
        96'000, 88'200, 64'000, 48'000, 44'100, 32'000, 24'000,
        22'050, 16'000, 12'000, 11'025, 8'000,  7'350,
    };
    constexpr std::uint32_t is_explicit = 15;
    const std::uint32_t index = bits.take(4);
    return index == is_explicit ? bits.take(24) : entry_of(frequencies, index);
}

// Of an extension for which decoders that do not know it have no eyes (1.6.5.3): behind the
// configuration of the core, a word and the rate.
std::uint32_t hidden_frequency(BitReader& bits) {
    constexpr std::uint32_t sync_word = 0x2B7;
    const bool depends_on_core = (bits.take(2) & 1U) != 0; // behind the length of frames
    if (depends_on_core)
        bits.take(14);
    bits.take(1); // an extension of the core
    if (bits.remaining() < 11 + 5 + 1 + 4 || bits.take(11) != sync_word ||
        take_object_type(bits) != Sbr || bits.take(1) == 0)
        return 0;
    return take_frequency(bits);
}

// The fields of "alac" (Apple Lossless Audio Codec, "ALACSpecificConfig"), behind its version.
struct AlacRecord {
    static constexpr std::size_t size = 24;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint8_t channels = 0;
    std::uint32_t sample_rate = 0;

    static constexpr auto fields() {
        return std::tuple{Field{9, &AlacRecord::channels}, Field{20, &AlacRecord::sample_rate}};
    }
};

Read<SoundFormat> read_alac(Window content) {
    VELL_TRY(read_full_box(content));
    const auto record = VELL_TRY(content.read_record<AlacRecord>());
    return SoundFormat{record.channels, record.sample_rate};
}

// "dOps" (Encapsulation of Opus in ISO Base Media File Format, 4.3.2): its version and the
// channels. Whatever was encoded, 48 kHz come out.
Read<SoundFormat> read_opus(Window content) {
    constexpr std::uint32_t output_rate = 48'000;
    const auto version_and_channels = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
    return SoundFormat{version_and_channels & 0xFFU, output_rate};
}

// "dfLa" (Encapsulation of FLAC in ISO Base Media File Format, 3.3.2), whose first block is
// STREAMINFO (RFC 9639, 8.2): 20 bits for the rate, then three for the channels less one.
Read<SoundFormat> read_flac(Window content) {
    constexpr std::uint64_t block_header = 4;
    constexpr std::uint64_t before_rate = 10;
    VELL_TRY(read_full_box(content));
    content.skip(block_header + before_rate);
    const auto bits = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    return SoundFormat{(bits >> 9 & 7U) + 1, bits >> 12};
}

constexpr std::array<std::uint32_t, 3> dolby_rates{48'000, 44'100, 32'000};
constexpr std::array<std::uint32_t, 8> dolby_channels{2, 1, 2, 3, 3, 4, 4, 5};

// "dac3" (ETSI TS 102 366, annex F.4).
Read<SoundFormat> read_ac3(Window content) {
    std::array<char, 3> bytes{};
    VELL_TRY(content.read_exactly(bytes));
    BitReader bits({bytes.data(), bytes.size()});
    const std::uint32_t rate = entry_of(dolby_rates, bits.take(2));
    bits.take(5 + 3); // the version and the kind of sound
    const std::uint32_t channels = dolby_channels[bits.take(3)] + bits.take(1);
    return SoundFormat{channels, rate};
}

// "dec3" (annex F.6), its first stream. Streams that depend on it may have more channels.
Read<SoundFormat> read_enhanced_ac3(Window content) {
    std::array<char, 5> bytes{};
    VELL_TRY(content.read_exactly(bytes));
    BitReader bits({bytes.data(), bytes.size()});
    bits.take(13 + 3); // bit rate and number of streams
    const std::uint32_t rate = entry_of(dolby_rates, bits.take(2));
    bits.take(5 + 1 + 1 + 3);
    const std::uint32_t channels = dolby_channels[bits.take(3)] + bits.take(1);
    bits.take(3);
    const bool has_dependent_streams = bits.take(4) > 0;
    return SoundFormat{has_dependent_streams ? 0 : channels, rate};
}

// "srat" (ISO/IEC 14496-12, 12.2.3).
Read<SoundFormat> read_sampling_rate(Window content) {
    VELL_TRY(read_full_box(content));
    return SoundFormat{0, VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))};
}

} // namespace

Read<SoundFormat> read_audio_specific_config(Window content) {
    constexpr std::size_t longest_part = 16; // that is looked at
    constexpr std::array<std::uint32_t, 15> channel_counts{0, 1, 2, 3, 4, 5,  6, 8,
                                                           0, 0, 0, 7, 8, 24, 8};
    std::array<char, longest_part> bytes{};
    const std::size_t size = VELL_TRY(content.read(bytes));
    if (size < sizeof(std::uint16_t))
        return fault(Damage::CutOff);
    BitReader bits({bytes.data(), size});
    const std::uint32_t type = take_object_type(bits);
    SoundFormat format;
    format.sample_rate = take_frequency(bits);
    format.channels = entry_of(channel_counts, bits.take(4));
    if (type == ParametricStereo && format.channels == 1)
        format.channels = 2;
    std::uint32_t extended = 0;
    if (type == Sbr || type == ParametricStereo)
        extended = take_frequency(bits);
    else
        extended = hidden_frequency(bits);
    if (extended != 0)
        format.sample_rate = extended;
    return format;
}

Read<SoundFormat> read_sound_format(FourCc type, Window content) {
    switch (type) {
    case "alac"_4cc:
        return read_alac(content);
    case "dOps"_4cc:
        return read_opus(content);
    case "dfLa"_4cc:
        return read_flac(content);
    case "dac3"_4cc:
        return read_ac3(content);
    case "dec3"_4cc:
        return read_enhanced_ac3(content);
    case "srat"_4cc:
        return read_sampling_rate(content);
    default:
        return fault(Damage::Absent);
    }
}

} // namespace vell::formats::isobmff
