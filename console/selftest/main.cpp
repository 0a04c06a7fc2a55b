// selftest: runs the tests of Windows and the examples of the reference on the machine that it is
// started on, and writes a report.
#include "console/host/terminal.h"
#include "console/host/wide_text.h"
#include "console/selftest/checks.h"
#include "console/selftest/machine.h"
#include "console/selftest/options.h"
#include "console/selftest/report.h"
#include "console/selftest/shown_paths.h"
#include "console/selftest/work_folder.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace vell::selftest {
namespace {

namespace fs = std::filesystem;
using console::write_error;
using console::write_output;

// Tests that change something which is not theirs; --all runs them all the same.
struct ChangingTest {
    const char* name;
    const char* reason;
};
constexpr ChangingTest changing_tests[] = {
    {"Information.KindsAreTheShells", "registers a file type for a moment; --all runs it"},
};

class SelfTest {
  public:
    explicit SelfTest(const Options& options);

    bool run(); // whether nothing failed

  private:
    void run_tests();
    void run_examples();
    void add(const std::string& name, Outcomes outcomes);
    void write_report() const;

    const Options& options_;
    const fs::path folder_ = executable_folder();
    const fs::path temporary_ = long_form(options_.work.value_or(temporary_folder()));
    const WorkFolder work_{temporary_};
    const Places places_{folder_ / L"host", folder_ / L"examples", work_.path()};
    const Limits limits_{options_.limit, std::min(options_.limit, Limits().test)};
    const NameFilter filter_{options_.filter};
    const fs::path report_file_ = options_.report.value_or(folder_ / L"selftest-report.txt");
    const std::vector<TestSuite> suites_ = chosen_tests(places_, filter_);
    const std::vector<ExamplePage> pages_ = chosen_examples(places_, filter_);
    ShownPaths hidden_;
    Report report_;
    std::size_t done_ = 0; // suites and pages
};

SelfTest::SelfTest(const Options& options) : options_(options) {
    hidden_.add(to_utf16(work_.path().wstring()), "%WORK%");
    hidden_.add(to_utf16(folder_.wstring()), "%SELFTEST%");
    const std::wstring profile = environment(L"USERPROFILE");
    hidden_.add(to_utf16(long_form(profile).wstring()), "%USERPROFILE%");
    hidden_.add(to_utf16(profile), "%USERPROFILE%");
    wchar_t short_form[MAX_PATH + 1] = L"";
    GetShortPathNameW(profile.c_str(), short_form, MAX_PATH + 1);
    hidden_.add(to_utf16(short_form), "%USERPROFILE%");

    report_.title = "Self-test of the Vell File Plug-In";
    report_.facts = {{"self-test", VELL_SELFTEST_VERSION},
                     {"plug-in", file_version(places_.programs / L"VellFile.fmx64")}};
    for (auto& [name, value] : machine_facts(temporary_))
        report_.facts.emplace_back(name, hidden_.in(value));
    if (!options.filter.empty())
        report_.facts.emplace_back("only", options.filter);
}

bool SelfTest::run() {
    for (const auto& [name, value] : report_.facts)
        write_output(name + std::string(18 - std::min<std::size_t>(name.size(), 17), ' ') + value +
                     "\n");
    write_output("\nIt takes some minutes. Tests move the mouse and show windows: leave them.\n\n");
    run_tests();
    run_examples();
    report_.is_complete = true;
    write_report();
    const Totals totals = totals_of(report_);
    if (totals.passed + totals.failed + totals.skipped == 0)
        throw std::runtime_error("no check has such a name; --list shows them");
    write_output("\n" + totals_text(totals) +
                 "\nThe report: " + console::narrow(report_file_.wstring()) + "\n");
    return totals.failed == 0;
}

void SelfTest::run_tests() {
    report_.parts.push_back({"tests"});
    for (TestSuite suite : suites_) {
        Outcomes left_out;
        for (const ChangingTest& test : changing_tests)
            if (!options_.all && std::erase(suite.tests, test.name) > 0)
                left_out.push_back({test.name, Verdict::Skipped, test.reason});
        Outcomes outcomes;
        if (!suite.tests.empty())
            outcomes = run_suite(places_, suite, limits_);
        outcomes.insert(outcomes.end(), left_out.begin(), left_out.end());
        add(suite.name, std::move(outcomes));
    }
}

void SelfTest::run_examples() {
    report_.parts.push_back({"examples"});
    for (const ExamplePage& page : pages_)
        add(page.name, run_page(places_, page, limits_));
}

// What has been found so far is in the report, should the run be ended by its user.
void SelfTest::add(const std::string& name, Outcomes outcomes) {
    write_output("[" + std::to_string(++done_) + "/" +
                 std::to_string(suites_.size() + pages_.size()) + "] " + name + ": " +
                 totals_text(totals_of(outcomes)) + "\n");
    for (Outcome& outcome : outcomes) {
        outcome.message = hidden_.in(outcome.message);
        if (outcome.verdict == Verdict::Failed)
            write_output("    FAIL " + outcome.name + "\n");
        report_.parts.back().outcomes.push_back(std::move(outcome));
    }
    write_report();
}

void SelfTest::write_report() const {
    std::ofstream file(report_file_, std::ios::binary);
    if (!(file << report_text(report_) << std::flush))
        throw std::runtime_error("the report cannot be written; --report FILE names another place");
}

void list_checks(const Options& options) {
    const fs::path folder = executable_folder();
    const WorkFolder work(long_form(options.work.value_or(temporary_folder())));
    const Places places{folder / L"host", folder / L"examples", work.path()};
    const NameFilter filter(options.filter);
    for (const TestSuite& suite : chosen_tests(places, filter))
        for (const std::string& test : suite.tests)
            write_output(test + "\n");
    for (const ExamplePage& page : chosen_examples(places, filter))
        write_output("Examples." + page.name + "\n");
}

int perform(int count, wchar_t** arguments) {
    SetErrorMode(SEM_NOGPFAULTERRORBOX); // of the programs that are started, too
    try {
        const Options options = read_options(count, arguments);
        if (options.help)
            write_output(usage);
        else if (options.list)
            list_checks(options);
        else
            return SelfTest(options).run() ? 0 : 1;
        return 0;
    } catch (const std::exception& error) {
        write_error("selftest: " + std::string(error.what()) + "\n");
        return 2;
    }
}

} // namespace
} // namespace vell::selftest

int wmain(int count, wchar_t** arguments) {
    const int code = vell::selftest::perform(count, arguments);
    if (vell::selftest::was_double_clicked())
        vell::console::read_console_line("\nPress Enter to close this window. ");
    return code;
}
