// The checks themselves: the tests of Windows in their own program, and the examples of the
// reference in the console host. Windows only.
#pragma once

#include "console/selftest/example_list.h"
#include "console/selftest/name_filter.h"
#include "console/selftest/outcome.h"
#include "console/selftest/test_results.h"

#include <chrono>
#include <filesystem>

namespace vell::selftest {

struct Places {
    std::filesystem::path programs; // vellhost.exe, windows_tests.exe and what they load
    std::filesystem::path examples; // examples.txt, setup.vell and the files of the examples
    std::filesystem::path work;     // for what the checks write
};

struct Limits {
    std::chrono::seconds suite{300};
    std::chrono::seconds test{120}; // of one that is run alone
};

// The tests of the program that the filter takes; throws std::runtime_error when it does not start.
std::vector<TestSuite> chosen_tests(const Places& places, const NameFilter& filter);

// A suite in one process. When that crashes or hangs, each of its tests in a process of its own.
Outcomes run_suite(const Places& places, const TestSuite& suite, const Limits& limits);

std::vector<ExamplePage> chosen_examples(const Places& places, const NameFilter& filter);
Outcomes run_page(const Places& places, const ExamplePage& page, const Limits& limits);

} // namespace vell::selftest
