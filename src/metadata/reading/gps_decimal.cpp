#include "src/metadata/reading/gps_decimal.h"

#include "src/base/number_text.h"

#include <cstddef>

namespace vell::metadata {
namespace {

// Integers all the way, so that the eighth digit is the same on every machine. 2^32 times this
// still fits.
__extension__ using Wide = unsigned __int128;
constexpr std::uint64_t unit = 100'000'000; // of the last digit that is given
constexpr Wide fine = Wide{unit} * 1'000'000'000'000'000;

} // namespace

std::optional<std::string> decimal_degrees(std::span<const UnsignedRational> position,
                                           char reference) {
    if (position.empty() || position.size() > 3)
        return std::nullopt;
    Wide degrees = 0;
    std::uint64_t parts = 1; // of a degree
    for (const UnsignedRational& part : position) {
        if (part.denominator == 0)
            return std::nullopt;
        degrees += part.numerator * fine / (Wide{part.denominator} * parts);
        parts *= 60;
    }
    constexpr Wide step = fine / unit;
    const Wide rounded = (degrees + step / 2) / step;

    const bool negative = (reference | 0x20) == 's' || (reference | 0x20) == 'w';
    const std::string digits = to_text(static_cast<std::uint64_t>(rounded % unit));
    return (negative && rounded != 0 ? "-" : "") +
           to_text(static_cast<std::uint64_t>(rounded / unit)) + "." +
           std::string(8 - digits.size(), '0') + digits;
}

} // namespace vell::metadata
