// Moments as files have them.
#pragma once

#include <cstdint>

namespace vell::files {

// A moment in units of 100 ns from the start of 1601 on, in UTC; 0 where none is known.
enum class FileTime : std::uint64_t {};

} // namespace vell::files
