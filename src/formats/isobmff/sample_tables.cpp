#include "src/formats/isobmff/sample_tables.h"

#include "src/formats/isobmff/records.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace vell::formats::isobmff {
namespace {

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    return a + std::min(b, std::numeric_limits<std::uint64_t>::max() - a);
}
std::uint64_t product(std::uint32_t a, std::uint32_t b) {
    return std::uint64_t{a} * b;
}

// Gives `count` entries of `entry_size` bytes, read in pieces.
template <typename Visitor>
Read<void> each_entry(Window& table, std::uint64_t count, std::size_t entry_size,
                      const Visitor& visit) {
    constexpr std::size_t piece = 16384;
    const std::uint64_t in_piece = piece / entry_size;
    while (count > 0) {
        const std::uint64_t now = std::min(count, in_piece);
        const std::string bytes = VELL_TRY(table.read_bytes(now * entry_size));
        if (bytes.size() < now * entry_size)
            return fault(Damage::CutOff);
        for (std::size_t at = 0; at < bytes.size(); at += entry_size)
            visit(std::string_view(bytes).substr(at, entry_size));
        count -= now;
    }
    return {};
}

std::uint32_t field_of(std::string_view entry, std::size_t index) {
    return *load<std::uint32_t>(entry, index * sizeof(std::uint32_t), ByteOrder::Big);
}

// Sizes of four bits, eight or sixteen ("stz2"), which is how many bytes for all of them.
std::uint64_t bytes_of_fields(std::uint64_t count, unsigned bits) {
    return (count * bits + 7) / 8;
}

struct CompactSizes {
    unsigned bits = 0;
    std::uint64_t bytes = 0;

    void add(std::string_view entry) {
        const auto byte = static_cast<std::uint8_t>(entry.front());
        if (bits == 4)
            bytes = sum(bytes, (byte >> 4) + (byte & 15U));
        else if (bits == 8)
            bytes = sum(bytes, byte);
        else
            bytes = sum(bytes, *load<std::uint16_t>(entry, 0, ByteOrder::Big));
    }
};

Read<void> add_compact_sizes(Window& content, std::uint32_t size_field, SampleTotals& totals) {
    CompactSizes sizes{.bits = size_field & 0xFF};
    if (sizes.bits != 4 && sizes.bits != 8 && sizes.bits != 16)
        return fault(Damage::Corrupt);
    const std::size_t entry_size = sizes.bits == 16 ? 2 : 1;
    VELL_TRY(each_entry(content, bytes_of_fields(totals.samples, sizes.bits) / entry_size,
                        entry_size, [&](std::string_view entry) { sizes.add(entry); }));
    totals.bytes = sizes.bytes;
    return {};
}

} // namespace

void SampleTotals::add(const SampleTotals& other) {
    samples = sum(samples, other.samples);
    duration = sum(duration, other.duration);
    bytes = sum(bytes, other.bytes);
    bytes_are_known &= other.bytes_are_known;
}

Read<SampleTotals> read_time_to_sample(Window content) {
    VELL_TRY(read_full_box(content));
    const auto count = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    if (count > most_table_entries)
        return fault(Damage::TooLarge);
    SampleTotals totals;
    VELL_TRY(each_entry(content, count, TimeToSampleEntry::size, [&](std::string_view entry) {
        const std::uint32_t samples = field_of(entry, 0);
        totals.samples = sum(totals.samples, samples);
        totals.duration = sum(totals.duration, product(samples, field_of(entry, 1)));
    }));
    return totals;
}

Read<SampleTotals> read_sample_sizes(Window content, FourCc type) {
    VELL_TRY(read_full_box(content));
    // The size of all samples, 0 when each has its own; for "stz2" the bits that each one takes.
    const auto size_field = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    const auto count = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    SampleTotals totals;
    totals.samples = count;
    const bool is_compact = type == "stz2"_4cc;
    if (!is_compact && size_field != 0)
        totals.bytes = product(size_field, count);
    else if (count > most_table_entries)
        totals.bytes_are_known = false;
    else if (is_compact)
        VELL_TRY(add_compact_sizes(content, size_field, totals));
    else
        VELL_TRY(each_entry(content, count, sizeof(std::uint32_t), [&](std::string_view entry) {
            totals.bytes = sum(totals.bytes, field_of(entry, 0));
        }));
    return totals;
}

Read<std::uint64_t> read_first_chunk(Window content, FourCc type) {
    VELL_TRY(read_full_box(content));
    if (VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big)) == 0)
        return fault(Damage::Absent);
    if (type == "co64"_4cc)
        return content.read_integer<std::uint64_t>(ByteOrder::Big);
    return std::uint64_t{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))};
}

Read<FragmentHeader> read_fragment_header(Window content) {
    using namespace fragment_flag;
    const std::uint32_t flags = VELL_TRY(read_full_box(content)).flags();
    FragmentHeader header;
    header.track_id = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    if ((flags & base_data_offset) != 0)
        content.skip(sizeof(std::uint64_t));
    if ((flags & sample_description) != 0)
        content.skip(sizeof(std::uint32_t));
    if ((flags & fragment_flag::default_duration) != 0)
        header.default_duration = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    if ((flags & fragment_flag::default_size) != 0)
        header.default_size = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    return header;
}

Read<SampleTotals> read_track_run(Window content, const SampleDefaults& defaults) {
    using namespace fragment_flag;
    const std::uint32_t flags = VELL_TRY(read_full_box(content)).flags();
    const auto count = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    if ((flags & data_offset) != 0)
        content.skip(sizeof(std::uint32_t));
    if ((flags & first_sample_flags) != 0)
        content.skip(sizeof(std::uint32_t));
    SampleTotals totals{.samples = count,
                        .duration = product(count, defaults.duration),
                        .bytes = product(count, defaults.size)};
    const std::uint32_t per_sample =
        flags & (sample_duration | sample_size | sample_flags | composition_offset);
    if ((flags & (sample_duration | sample_size)) == 0)
        return totals;
    if (count > most_table_entries)
        return fault(Damage::TooLarge);
    const bool has_duration = (flags & sample_duration) != 0;
    const bool has_size = (flags & sample_size) != 0;
    if (has_duration)
        totals.duration = 0;
    if (has_size)
        totals.bytes = 0;
    const std::size_t entry_size =
        static_cast<std::size_t>(std::popcount(per_sample)) * sizeof(std::uint32_t);
    VELL_TRY(each_entry(content, count, entry_size, [&](std::string_view entry) {
        if (has_duration)
            totals.duration = sum(totals.duration, field_of(entry, 0));
        if (has_size)
            totals.bytes = sum(totals.bytes, field_of(entry, has_duration ? 1 : 0));
    }));
    return totals;
}

} // namespace vell::formats::isobmff
