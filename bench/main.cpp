// Runs the benchmarks whose names contain the argument (contents, dispatch, files, substitute), or
// all, and prints one table. Exit code 1 when a goal is missed.
#include "bench/harness.h"

#include <string_view>

int main(int argc, char** argv) {
    struct Group {
        std::string_view name;
        std::vector<vell::bench::Row> (*run)();
    };
    constexpr Group groups[] = {{"contents", vell::bench::contents_rows},
                                {"dispatch", vell::bench::dispatch_rows},
                                {"files", vell::bench::file_rows},
                                {"substitute", vell::bench::substitute_rows}};
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    std::vector<vell::bench::Row> rows;
    for (const Group& group : groups)
        if (group.name.find(wanted) != std::string_view::npos)
            for (vell::bench::Row& row : group.run())
                rows.push_back(std::move(row));
    return vell::bench::print_table(rows) ? 0 : 1;
}
