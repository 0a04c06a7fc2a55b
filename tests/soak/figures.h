// What this process holds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vell::soak {

inline constexpr double megabyte = 1024.0 * 1024.0;

struct Figures {
    std::uint64_t private_bytes = 0;
    std::uint64_t handles = 0;
    std::uint64_t threads = 0;
    std::int64_t host_objects = 0;
};

Figures current_figures();

// "12.3 MB private, 145 handles, 9 threads, 0 host objects"
std::string text_of(const Figures& figures);

// How far each may grow over a run, by the straight line through its samples.
struct Bounds {
    double private_bytes;
    double handles;
    double threads;
};

// Prints the growth from the tenth percent of the samples on, and whether all of it stays within
// the bounds; an object of the host that is there in one of the samples is a leak.
bool tell_growth(const std::vector<Figures>& samples, const Bounds& bounds);

} // namespace vell::soak
