#include "console/selftest/test_results.h"

#include "console/calc/xml_reader.h"
#include "src/base/utf8.h"

#include <cstdlib>

namespace vell::selftest {
namespace {

using console::XmlElement;

std::string attribute(const XmlElement& element, std::u16string_view name) {
    const std::u16string* const value = element.attribute(name);
    return value ? utf8_from_utf16(*value) : std::string();
}

// Behind the line that tells where in the sources the test was skipped.
std::string reason_in(const std::string& message) {
    const std::size_t line_end = message.find('\n');
    return line_end == message.npos ? message : message.substr(line_end + 1);
}

// Without the folder of the machine that the tests were built on.
std::string with_own_source(const std::string& message) {
    const std::size_t start = message.find("tests/");
    const bool is_in_place = start != message.npos && start < message.find('\n');
    return is_in_place ? message.substr(start) : message;
}

void add_message(Outcome& outcome, Verdict verdict, const std::string& message) {
    outcome.verdict = verdict;
    outcome.message += (outcome.message.empty() ? "" : "\n") + message;
}

Outcome outcome_of(const XmlElement& test) {
    Outcome outcome{attribute(test, u"classname") + '.' + attribute(test, u"name")};
    outcome.seconds = std::strtod(attribute(test, u"time").c_str(), nullptr);
    for (const XmlElement& child : test.children) {
        if (child.name == u"failure")
            add_message(outcome, Verdict::Failed, with_own_source(utf8_from_utf16(child.text)));
        else if (child.name == u"skipped" && outcome.verdict == Verdict::Passed)
            add_message(outcome, Verdict::Skipped, reason_in(attribute(child, u"message")));
    }
    return outcome;
}

} // namespace

std::vector<TestSuite> read_test_list(std::string_view output) {
    std::vector<TestSuite> suites;
    while (!output.empty()) {
        const std::size_t end = std::min(output.find('\n'), output.size());
        std::string_view line = output.substr(0, end);
        output.remove_prefix(std::min(end + 1, output.size()));
        line = line.substr(0, line.find('#')); // behind it stand parameters
        line = line.substr(0, line.find_last_not_of(" \r") + 1);
        if (line.starts_with("  ") && !suites.empty())
            suites.back().tests.push_back(suites.back().name + '.' + std::string(line.substr(2)));
        else if (line.ends_with('.') && line.find(' ') == line.npos)
            suites.push_back({std::string(line.substr(0, line.size() - 1))});
    }
    return suites;
}

std::optional<Outcomes> read_test_results(std::string_view xml) {
    const auto document = console::read_xml(utf16_from_utf8(xml));
    if (!document)
        return std::nullopt;
    Outcomes outcomes;
    for (const XmlElement& suite : document->children)
        for (const XmlElement& test : suite.children)
            if (test.name == u"testcase" && attribute(test, u"status") == "run")
                outcomes.push_back(outcome_of(test));
    return outcomes;
}

} // namespace vell::selftest
