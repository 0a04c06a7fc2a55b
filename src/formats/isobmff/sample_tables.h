// What the sample tables of a track add up to (ISO/IEC 14496-12, sections 8.6 and 8.7), and the
// runs of its fragments (8.8). Tables are read in pieces and never kept.
#pragma once

#include "src/formats/isobmff/boxes.h"

#include <cstdint>
#include <optional>

namespace vell::formats::isobmff {

// Sums stay at their greatest value instead of wrapping.
struct SampleTotals {
    std::uint64_t samples = 0;
    std::uint64_t duration = 0; // in units of the media's time scale
    std::uint64_t bytes = 0;
    bool bytes_are_known = true; // or the table is longer than what is read of one

    void add(const SampleTotals& other);
};

// Entries of one table that are summed up: more than a day of film has. Of longer ones only their
// number is taken.
inline constexpr std::uint64_t most_table_entries = 8'000'000;

// "stts": samples and duration. CutOff when the table is shorter than it says.
Read<SampleTotals> read_time_to_sample(Window content);
// "stsz" or "stz2": samples and bytes, without a duration. CutOff as above.
Read<SampleTotals> read_sample_sizes(Window content, FourCc type);
// The place of the first chunk in the file: "stco" or "co64". Absent in a table without chunks.
Read<std::uint64_t> read_first_chunk(Window content, FourCc type);

// What holds for the samples of a fragment that do not say otherwise.
struct SampleDefaults {
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
};

struct FragmentHeader {
    std::uint32_t track_id = 0;
    std::optional<std::uint32_t> default_duration;
    std::optional<std::uint32_t> default_size;
};
// "tfhd".
Read<FragmentHeader> read_fragment_header(Window content);
// "trun".
Read<SampleTotals> read_track_run(Window content, const SampleDefaults& defaults);

} // namespace vell::formats::isobmff
