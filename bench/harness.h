// Times two pieces of work against each other and prints their ratio.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vell::bench {

struct Row {
    std::string work;
    double ours_ns; // per call
    double peer_ns;
    double goal; // highest ratio that we want; 0 where the row is for information
    std::string note;
    std::string group = {}; // of the benchmarks, as they are chosen
};

// Nanoseconds per call, ours and the peer's in turns so that both meet the same conditions. A
// program makes one round, which is long enough for the clock; bench/run starts it for each of its
// rounds.
struct Timing {
    double ours_ns;
    double peer_ns;
};
Timing compare(const std::function<void()>& ours, const std::function<void()>& peer);

// Bytes of memory that the process uses, and has used at most so far.
std::size_t used_memory();
std::size_t peak_memory();

// The rows as a JSON array, for what compares and draws them; times in nanoseconds for a call.
std::string rows_as_json(const std::vector<Row>& rows);

std::vector<Row> dispatch_rows();
std::vector<Row> contents_rows();
std::vector<Row> substitute_rows();
std::vector<Row> file_rows();
std::vector<Row> zip_rows();
std::vector<Row> metadata_rows();
std::vector<Row> movie_rows();
std::vector<Row> pdf_rows();
std::vector<Row> picture_rows();

} // namespace vell::bench
