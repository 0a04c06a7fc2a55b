// Runs the benchmarks whose names contain the argument (contents, dispatch, files, metadata,
// movies, pdf, pictures, substitute, zip), or all, once each, and prints the rows as JSON.
#include "bench/harness.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// What a shell command prints in the benchmark of its caller.
void print_bytes(std::size_t count) {
    const std::string block(64 * 1024 - 1, '.');
    for (; count > 0; count -= std::min(count, block.size()))
        std::fwrite(block.data(), 1, std::min(count, block.size()), stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--print") {
        print_bytes(static_cast<std::size_t>(std::atoll(argv[2])));
        return 0;
    }
    struct Group {
        std::string_view name;
        std::vector<vell::bench::Row> (*run)();
    };
    constexpr Group groups[] = {{"contents", vell::bench::contents_rows},
                                {"dispatch", vell::bench::dispatch_rows},
                                {"substitute", vell::bench::substitute_rows},
                                {"files", vell::bench::file_rows},
                                {"metadata", vell::bench::metadata_rows},
                                {"movies", vell::bench::movie_rows},
                                {"pdf", vell::bench::pdf_rows},
                                {"pictures", vell::bench::picture_rows},
                                {"zip", vell::bench::zip_rows}};
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    std::vector<vell::bench::Row> rows;
    for (const Group& group : groups)
        if (group.name.find(wanted) != std::string_view::npos)
            for (vell::bench::Row& row : group.run()) {
                row.group = group.name;
                rows.push_back(std::move(row));
            }
    std::fputs(vell::bench::rows_as_json(rows).c_str(), stdout);
    return 0;
}
