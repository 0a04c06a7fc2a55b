// What one call may use of the machine.
#pragma once

#include <cstdint>
#include <limits>

namespace vell {

struct Limits {
    static constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t archive_bytes = none;   // that an archive expands to
    std::uint64_t archive_entries = none; // of an archive that is expanded
    std::uint64_t seconds = none;
    std::uint64_t memory_bytes = none; // for what is held as a whole, such as a picture or a text
    std::uint64_t command_output_bytes = none;
};

} // namespace vell
