// The command line of the self-test. Windows only.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace vell::selftest {

inline constexpr const char* usage =
    R"(Checks the plug-in in host\ on this machine and writes selftest-report.txt beside this program.

  selftest.exe [options]
    --filter NAMES    only these checks: patterns with * and ?, separated by colons, behind a dash
                      those that are left out; tests are SUITE.TEST, examples Examples.PAGE
    --report FILE     the report's file
    --work FOLDER     writes to a folder of its own in this one, not in the temporary folder
    --limit SECONDS   how long a suite may take (300)
    --all             also what registers a file type for a moment
    --list            shows the names of the checks

Exit code: 0 when nothing failed, 1 when something did, 2 when nothing could be run.
)";

struct Options {
    std::string filter;
    std::optional<std::filesystem::path> report;
    std::optional<std::filesystem::path> work;
    std::chrono::seconds limit{300};
    bool all = false;
    bool list = false;
    bool help = false;
};

// Throws std::runtime_error for what is none of them.
Options read_options(int count, wchar_t** arguments);

} // namespace vell::selftest
