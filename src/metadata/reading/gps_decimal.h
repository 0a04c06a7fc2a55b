// Positions in decimal degrees.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vell::metadata {

struct UnsignedRational {
    std::uint32_t numerator;
    std::uint32_t denominator;
};

// Degrees, minutes and seconds (Exif 2.3, section 4.6.6; either of the last two may be missing) as
// degrees with eight digits after the point, negative for the references S and W. nullopt when a
// denominator is 0 or there are other than one to three numbers.
//
// The tag readers do this in the GPS directory where ExifReadOptions::decimal_gps is set.
std::optional<std::string> decimal_degrees(std::span<const UnsignedRational> position,
                                           char reference);

} // namespace vell::metadata
