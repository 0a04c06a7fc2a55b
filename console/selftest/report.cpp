#include "console/selftest/report.h"

#include <algorithm>
#include <cstdio>

namespace vell::selftest {
namespace {

constexpr std::size_t fact_width = 18;

std::string in_seconds(double seconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// Each line of a message, shifted to the right.
std::string indented(std::string_view message) {
    std::string lines;
    while (!message.empty()) {
        const std::size_t end = std::min(message.find('\n'), message.size());
        lines += "         " + std::string(message.substr(0, end)) + '\n';
        message.remove_prefix(std::min(end + 1, message.size()));
    }
    return lines;
}

std::string line_of(const Outcome& outcome) {
    const char* const words[] = {"pass", "FAIL", "skip"};
    const std::string time = in_seconds(outcome.seconds);
    std::string line = "  " + std::string(words[static_cast<int>(outcome.verdict)]) + ' ' +
                       std::string(10 - std::min<std::size_t>(time.size(), 10), ' ') + time + "  " +
                       outcome.name + '\n';
    return line + indented(outcome.message);
}

std::string with_pairs(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\r')
            continue;
        if (c == '\n')
            result += '\r';
        result += c;
    }
    return result;
}

std::string failures_in(const Report& report) {
    std::string lines;
    for (const Part& part : report.parts)
        for (const Outcome& outcome : part.outcomes)
            if (outcome.verdict == Verdict::Failed)
                lines += line_of(outcome);
    return lines.empty() ? lines : "\nWhat failed\n" + lines;
}

} // namespace

Totals totals_of(const Outcomes& outcomes) {
    Totals totals;
    for (const Outcome& outcome : outcomes) {
        totals.passed += outcome.verdict == Verdict::Passed;
        totals.failed += outcome.verdict == Verdict::Failed;
        totals.skipped += outcome.verdict == Verdict::Skipped;
        totals.seconds += outcome.seconds;
    }
    return totals;
}

Totals totals_of(const Report& report) {
    Totals all;
    for (const Part& part : report.parts) {
        const Totals totals = totals_of(part.outcomes);
        all.passed += totals.passed;
        all.failed += totals.failed;
        all.skipped += totals.skipped;
        all.seconds += totals.seconds;
    }
    return all;
}

std::string totals_text(const Totals& totals) {
    return std::to_string(totals.passed) + " passed, " + std::to_string(totals.failed) +
           " failed, " + std::to_string(totals.skipped) + " skipped, " + in_seconds(totals.seconds);
}

std::string report_text(const Report& report) {
    std::string text = report.title + "\n\n";
    for (const auto& [name, value] : report.facts)
        text += padded(name, fact_width) + value + '\n';
    text += '\n' + padded("all", fact_width) + totals_text(totals_of(report)) + '\n';
    for (const Part& part : report.parts)
        text += padded(part.title, fact_width) + totals_text(totals_of(part.outcomes)) + '\n';
    if (!report.is_complete)
        text += "\nThis run has not come to its end.\n";
    text += failures_in(report);
    for (const Part& part : report.parts) {
        text += '\n' + part.title + '\n';
        for (const Outcome& outcome : part.outcomes)
            text += line_of(outcome);
    }
    return with_pairs(text);
}

} // namespace vell::selftest
