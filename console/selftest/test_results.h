// What a GoogleTest program lists and reports. Portable.
#pragma once

#include "console/selftest/outcome.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::selftest {

struct TestSuite {
    std::string name;
    std::vector<std::string> tests = {}; // SUITE.TEST
};

// Of the output of --gtest_list_tests.
std::vector<TestSuite> read_test_list(std::string_view output);

// Of a report that --gtest_output=xml:FILE has written; nullopt for one that is torn.
std::optional<Outcomes> read_test_results(std::string_view xml);

} // namespace vell::selftest
