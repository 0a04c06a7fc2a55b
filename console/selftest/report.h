// The report of a run. Portable.
#pragma once

#include "console/selftest/outcome.h"

#include <string>
#include <utility>
#include <vector>

namespace vell::selftest {

struct Totals {
    std::size_t passed = 0;
    std::size_t failed = 0;
    std::size_t skipped = 0;
    double seconds = 0; // that the checks took
};

Totals totals_of(const Outcomes& outcomes);
std::string totals_text(const Totals& totals);

struct Part {
    std::string title;
    Outcomes outcomes = {};
};

struct Report {
    std::string title;
    std::vector<std::pair<std::string, std::string>> facts; // name and value
    std::vector<Part> parts;
    bool is_complete = false;
};

Totals totals_of(const Report& report);

// Lines that end with CR LF: the facts, the totals, what failed and why, then every check.
std::string report_text(const Report& report);

} // namespace vell::selftest
