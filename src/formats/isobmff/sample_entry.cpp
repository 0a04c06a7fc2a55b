#include "src/formats/isobmff/sample_entry.h"

#include <algorithm>
#include <bit>

namespace vell::formats::isobmff {
namespace {

constexpr std::uint64_t entry_header_size = 8; // reserved bytes and the data reference

Read<Picture> read_picture(Window& content) {
    const auto record = VELL_TRY(content.read_record<VisualEntryRecord>());
    Picture picture;
    picture.width = record.width;
    picture.height = record.height;
    picture.depth = record.depth;
    const std::string_view name(record.compressor_name.data(), record.compressor_name.size());
    const auto length = static_cast<std::uint8_t>(name.front());
    picture.compressor_name = name.substr(1, length);
    return picture;
}

// The double of QuickTime's version 2; 0 for what no rate can be.
double sample_rate_of(std::uint64_t bits) {
    constexpr double highest = 1e9;
    const auto rate = std::bit_cast<double>(bits);
    return rate > 0 && rate <= highest ? rate : 0;
}

// QuickTime's versions have more fields. In a description of version 1, which QuickTime does not
// have, an entry of version 1 has a box "srat" instead (section 12.2.3).
Read<Sound> read_sound(Window& content, std::uint8_t description_version) {
    const auto record = VELL_TRY(content.read_record<AudioEntryRecord>());
    Sound sound{record.channel_count, record.sample_size, from_16_16(record.sample_rate)};
    if (record.version == 1 && description_version == 0)
        content.skip(audio_entry_1_size);
    if (record.version != 2)
        return sound;
    const std::uint64_t start = content.position();
    const auto more = VELL_TRY(content.read_record<AudioEntry2Record>());
    // Its size counts what stands before it, with the header of the box.
    const std::uint64_t before = BoxHeader::size + start;
    content.seek(start + std::max<std::uint64_t>(AudioEntry2Record::size,
                                                 std::max<std::uint64_t>(more.struct_size, before) -
                                                     before));
    return Sound{more.channel_count, more.bits_per_channel, sample_rate_of(more.sample_rate)};
}

// The descriptors of an "esds" box, each a tag and a size of seven bits a byte (ISO/IEC 14496-1,
// section 8.3.3).
enum class DescriptorTag : std::uint8_t {
    ElementaryStream = 3,
    DecoderConfig = 4,
    DecoderSpecificInfo = 5,
};

Read<Window> read_descriptor(Window& content, DescriptorTag wanted) {
    constexpr int longest_size = 4;
    const auto tag = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big));
    if (DescriptorTag{tag} != wanted)
        return fault(Damage::Absent);
    std::uint64_t size = 0;
    for (int i = 0; i < longest_size; ++i) {
        const auto byte = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big));
        size = size << 7 | (byte & 0x7FU);
        if ((byte & 0x80U) == 0)
            break;
    }
    return content.part(content.position(), size);
}

// The fields of DecoderConfigDescriptor.
struct DecoderConfigRecord {
    static constexpr std::size_t size = 13;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint8_t object_type = 0;
    std::uint32_t maximum_bit_rate = 0;
    std::uint32_t average_bit_rate = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &DecoderConfigRecord::object_type},
                          Field{5, &DecoderConfigRecord::maximum_bit_rate},
                          Field{9, &DecoderConfigRecord::average_bit_rate}};
    }
};

bool is_aac(std::uint8_t object_type) {
    return object_type == 0x40 || (object_type >= 0x66 && object_type <= 0x68);
}

Read<DecoderConfig> read_decoder_config(Window content) {
    constexpr std::uint8_t depends_on_stream = 0x80;
    constexpr std::uint8_t has_url = 0x40;
    constexpr std::uint8_t has_clock_stream = 0x20;
    VELL_TRY(read_full_box(content));
    Window stream = VELL_TRY(read_descriptor(content, DescriptorTag::ElementaryStream));
    stream.skip(sizeof(std::uint16_t)); // its number
    const auto flags = VELL_TRY(stream.read_integer<std::uint8_t>(ByteOrder::Big));
    if ((flags & depends_on_stream) != 0)
        stream.skip(sizeof(std::uint16_t));
    if ((flags & has_url) != 0)
        stream.skip(VELL_TRY(stream.read_integer<std::uint8_t>(ByteOrder::Big)));
    if ((flags & has_clock_stream) != 0)
        stream.skip(sizeof(std::uint16_t));
    Window config = VELL_TRY(read_descriptor(stream, DescriptorTag::DecoderConfig));
    const auto record = VELL_TRY(config.read_record<DecoderConfigRecord>());
    DecoderConfig decoder{record.object_type, record.maximum_bit_rate, record.average_bit_rate, {}};
    if (is_aac(record.object_type))
        if (const auto specific =
                VELL_TRY(if_sound(read_descriptor(config, DescriptorTag::DecoderSpecificInfo))))
            if (const auto sound = VELL_TRY(if_sound(read_audio_specific_config(*specific))))
                decoder.sound = *sound;
    return decoder;
}

// The format that a protection scheme hides (section 8.12).
Read<std::optional<FourCc>> read_original_format(const Window& scheme) {
    auto box = VELL_TRY(find_box(scheme, "frma"_4cc));
    if (!box)
        return std::optional<FourCc>();
    const auto format =
        VELL_TRY(if_sound(box->content.read_integer<std::uint32_t>(ByteOrder::Big)));
    return format ? std::optional(FourCc{*format}) : std::nullopt;
}

// What the decoder is told counts more than the entry.
void refine(SampleEntry& entry, const SoundFormat& format) {
    if (!entry.sound)
        return;
    if (format.channels != 0)
        entry.sound->channels = format.channels;
    if (format.sample_rate != 0)
        entry.sound->sample_rate = format.sample_rate;
}

Read<void> read_extension(Box& box, SampleEntry& entry) {
    switch (box.type) {
    case "sinf"_4cc:
        entry.original_format = VELL_TRY(read_original_format(box.content));
        break;
    case "esds"_4cc:
        entry.decoder = VELL_TRY(if_sound(read_decoder_config(box.content)));
        if (entry.decoder)
            refine(entry, entry.decoder->sound);
        break;
    case "wave"_4cc: // where QuickTime puts it
        return each_box(box.content, [&](Box& inner) -> Read<void> {
            return inner.type != "wave"_4cc ? read_extension(inner, entry) : Read<void>();
        });
    case "btrt"_4cc:
        if (const auto rates = VELL_TRY(if_sound(box.content.read_record<BitRateRecord>())))
            entry.average_bit_rate = rates->average;
        break;
    default:
        if (const auto format = VELL_TRY(if_sound(read_sound_format(box.type, box.content))))
            refine(entry, *format);
        break;
    }
    return {};
}

// AMR has one channel, whatever the entry says, and a rate for each of its kinds.
void refine_speech(SampleEntry& entry) {
    if (entry.codec() == "samr"_4cc)
        refine(entry, {1, 8'000});
    else if (entry.codec() == "sawb"_4cc)
        refine(entry, {1, 16'000});
}

} // namespace

EntryKind entry_kind_of(FourCc handler) {
    switch (handler) {
    case "vide"_4cc:
    case "pict"_4cc:
    case "auxv"_4cc:
        return EntryKind::Picture;
    case "soun"_4cc:
        return EntryKind::Sound;
    case "tmcd"_4cc:
        return EntryKind::TimeCode;
    default:
        return EntryKind::Other;
    }
}

Read<Window> boxes_of_entry(Window content, EntryKind kind, std::uint8_t description_version) {
    content.seek(entry_header_size);
    switch (kind) {
    case EntryKind::Picture:
        VELL_TRY(read_picture(content));
        break;
    case EntryKind::Sound:
        VELL_TRY(read_sound(content, description_version));
        break;
    case EntryKind::TimeCode:
    case EntryKind::Other:
        return fault(Damage::Absent);
    }
    return content.from(content.position());
}

Read<SampleEntry> read_sample_entry(Window description, FourCc handler) {
    const std::uint8_t version = VELL_TRY(read_full_box(description)).version();
    description.skip(sizeof(std::uint32_t)); // the number of entries
    BoxWalk walk(description.from(description.position()));
    const auto box = VELL_TRY(walk.next());
    if (!box)
        return fault(Damage::Absent);
    SampleEntry entry;
    entry.format = box->type;
    Window content = box->content;
    content.seek(entry_header_size);
    const EntryKind kind = entry_kind_of(handler);
    if (kind == EntryKind::Picture)
        entry.picture = VELL_TRY(if_sound(read_picture(content)));
    else if (kind == EntryKind::Sound)
        entry.sound = VELL_TRY(if_sound(read_sound(content, version)));
    else if (kind == EntryKind::TimeCode)
        entry.time_code = VELL_TRY(if_sound(content.read_record<TimeCodeEntryRecord>()));
    if (entry.picture || entry.sound)
        VELL_TRY(each_box(content.from(content.position()),
                          [&](Box& inner) { return read_extension(inner, entry); }));
    refine_speech(entry);
    return entry;
}

} // namespace vell::formats::isobmff
