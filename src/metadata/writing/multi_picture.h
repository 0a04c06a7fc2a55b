// The index of a file that holds several pictures, once something before them has changed its size.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::metadata {

// What a change before the first picture's scan does to the places in a file.
struct PictureShift {
    std::uint64_t header;    // where that of the index stood: offsets count from there
    std::uint64_t scan;      // where the first picture's compressed data began, which all moved
    std::int64_t offsets;    // what is to be added to those of pictures behind it
    std::int64_t first_size; // and to the size of the first picture
};

// The index, from its TIFF header on, with the offsets and the size after the change; as it is
// where it cannot be read. ResourceTooLarge for what then exceeds 32 bits.
Result<std::string> shifted_index(std::string_view index, const PictureShift& shift);

} // namespace vell::metadata
