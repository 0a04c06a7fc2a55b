// What became of a check.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vell::selftest {

enum class Verdict : std::uint8_t { Passed, Failed, Skipped };

struct Outcome {
    std::string name;
    Verdict verdict = Verdict::Passed;
    std::string message = {}; // of a failure, or why it was skipped; lines end with LF
    double seconds = 0;
};

using Outcomes = std::vector<Outcome>;

} // namespace vell::selftest
