// What a straight line through samples says of their growth.
#pragma once

#include <cstddef>
#include <span>

namespace vell::soak {

// How much the line of least squares rises from the first sample to the last one, which stand at
// equal distances; 0 for fewer than two.
inline double growth_of(std::span<const double> samples) {
    const auto count = static_cast<double>(samples.size());
    if (samples.size() < 2)
        return 0;
    const double middle = (count - 1) / 2;
    double products = 0;
    double squares = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double distance = static_cast<double>(i) - middle;
        products += distance * samples[i];
        squares += distance * distance;
    }
    return products / squares * (count - 1);
}

} // namespace vell::soak
