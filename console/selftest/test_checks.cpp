#include "console/host/wide_text.h"
#include "console/selftest/checks.h"
#include "console/selftest/child_process.h"

#include <algorithm>
#include <stdexcept>

namespace vell::selftest {
namespace {

ChildCommand test_program(const Places& places, std::wstring arguments,
                          std::chrono::seconds limit) {
    return {places.programs / L"windows_tests.exe", std::move(arguments), places.programs,
            places.work / L"windows_tests.txt", limit};
}

// What was printed last, which tells where a test was.
std::string last_lines(std::string_view output) {
    constexpr std::size_t most = 1000;
    return std::string(output.substr(output.size() - std::min(output.size(), most)));
}

struct Run {
    ChildEnd end;
    std::optional<Outcomes> outcomes; // none when the program has not come to its end
};

Run run_tests(const Places& places, const std::string& filter, std::chrono::seconds limit) {
    const std::filesystem::path xml = places.work / L"windows_tests.xml";
    std::error_code ignored;
    std::filesystem::remove(xml, ignored);
    const std::wstring arguments = L"--gtest_color=no --gtest_filter=" + console::widen(filter) +
                                   L" \"--gtest_output=xml:" + xml.wstring() + L"\"";
    Run run{run_child(test_program(places, arguments, limit)), std::nullopt};
    if (!run.end.was_stopped && std::filesystem::exists(xml))
        run.outcomes = read_test_results(read_file(xml));
    return run;
}

Outcome run_alone(const Places& places, const std::string& test, const Limits& limits) {
    Run run = run_tests(places, test, limits.test);
    if (run.outcomes && run.outcomes->size() == 1)
        return run.outcomes->front();
    return {test, Verdict::Failed,
            end_text(run.end, limits.test) + "\n" + last_lines(run.end.output + run.end.errors),
            run.end.seconds};
}

} // namespace

std::vector<TestSuite> chosen_tests(const Places& places, const NameFilter& filter) {
    constexpr std::chrono::seconds limit{60};
    const ChildEnd end = run_child(test_program(places, L"--gtest_list_tests", limit));
    std::vector<TestSuite> suites = read_test_list(end.output);
    if (suites.empty())
        throw std::runtime_error("windows_tests.exe lists no tests: " + end_text(end, limit) +
                                 "\n" + last_lines(end.errors));
    for (TestSuite& suite : suites)
        std::erase_if(suite.tests, [&](const std::string& test) { return !filter.takes(test); });
    std::erase_if(suites, [](const TestSuite& suite) { return suite.tests.empty(); });
    return suites;
}

Outcomes run_suite(const Places& places, const TestSuite& suite, const Limits& limits) {
    std::string filter;
    for (const std::string& test : suite.tests)
        filter += (filter.empty() ? "" : ":") + test;
    const Run run = run_tests(places, filter, limits.suite);
    if (run.outcomes && run.outcomes->size() == suite.tests.size())
        return *run.outcomes;
    Outcomes outcomes;
    for (const std::string& test : suite.tests)
        outcomes.push_back(run_alone(places, test, limits));
    const bool failed = std::ranges::any_of(
        outcomes, [](const Outcome& outcome) { return outcome.verdict == Verdict::Failed; });
    if (!failed)
        outcomes.push_back({suite.name + ".*", Verdict::Failed,
                            "together, not alone: " + end_text(run.end, limits.suite) + "\n" +
                                last_lines(run.end.output + run.end.errors),
                            run.end.seconds});
    return outcomes;
}

} // namespace vell::selftest
