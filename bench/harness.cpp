#include "bench/harness.h"

#include "src/base/json_writer.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace vell::bench {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_of(const std::function<void()>& work, long calls) {
    const auto start = Clock::now();
    for (long i = 0; i < calls; ++i)
        work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Calls that fill a round of about 50 ms.
long calls_in_a_round(const std::function<void()>& work) {
    constexpr double round_seconds = 0.05;
    long calls = 1;
    for (;;) {
        const double seconds = seconds_of(work, calls);
        if (seconds >= round_seconds)
            return calls;
        calls =
            std::max(calls + 1, seconds > 1e-4 ? static_cast<long>(static_cast<double>(calls) *
                                                                   round_seconds / seconds * 1.1)
                                               : calls * 10);
    }
}

PROCESS_MEMORY_COUNTERS memory_counters() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters;
}

} // namespace

Timing compare(const std::function<void()>& ours, const std::function<void()>& peer) {
    const auto time = [](const std::function<void()>& work) {
        const long calls = calls_in_a_round(work); // which warms up, too
        return [&work, calls] {
            return seconds_of(work, calls) / static_cast<double>(calls) * 1e9;
        };
    };
    const auto our_time = time(ours);
    const auto peer_time = time(peer);
    return {our_time(), peer_time()};
}

std::size_t used_memory() {
    return memory_counters().WorkingSetSize;
}

std::size_t peak_memory() {
    return memory_counters().PeakWorkingSetSize;
}

std::string rows_as_json(const std::vector<Row>& rows) {
    JsonWriter json;
    json.begin_array();
    for (const Row& row : rows) {
        json.begin_object();
        json.member("group", std::string_view(row.group));
        json.member("work", std::string_view(row.work));
        json.member_number("ours", row.ours_ns);
        json.member_number("peer", row.peer_ns);
        json.member_number("ratio", row.ours_ns / row.peer_ns);
        if (row.goal > 0)
            json.member_number("goal", row.goal);
        json.member("note", std::string_view(row.note));
        json.end_object();
    }
    json.end_array();
    return json.take() + "\n";
}

} // namespace vell::bench
