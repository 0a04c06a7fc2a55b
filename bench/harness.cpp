#include "bench/harness.h"

#include "src/base/json_writer.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>

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

Timing compare(const std::function<void()>& ours, const std::function<void()>& peer, int rounds) {
    const long our_calls = calls_in_a_round(ours);
    const long peer_calls = calls_in_a_round(peer);
    Timing best{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    for (int round = 0; round < rounds; ++round) {
        best.ours_ns = std::min(best.ours_ns,
                                seconds_of(ours, our_calls) / static_cast<double>(our_calls) * 1e9);
        best.peer_ns = std::min(best.peer_ns, seconds_of(peer, peer_calls) /
                                                  static_cast<double>(peer_calls) * 1e9);
    }
    return best;
}

std::size_t used_memory() {
    return memory_counters().WorkingSetSize;
}

std::size_t peak_memory() {
    return memory_counters().PeakWorkingSetSize;
}

bool print_table(const std::vector<Row>& rows) {
    bool within = true;
    std::printf("| work | ours | peer | ratio | goal | note |\n|---|---|---|---|---|---|\n");
    for (const Row& row : rows) {
        const double ratio = row.ours_ns / row.peer_ns;
        const bool missed = row.goal > 0 && ratio > row.goal;
        within = within && !missed;
        char goal[16] = "-";
        if (row.goal > 0)
            std::snprintf(goal, sizeof goal, "%.2f%s", row.goal, missed ? " MISSED" : "");
        std::printf("| %s | %.3f us | %.3f us | %.2f | %s | %s |\n", row.work.c_str(),
                    row.ours_ns / 1e3, row.peer_ns / 1e3, ratio, goal, row.note.c_str());
    }
    return within;
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
