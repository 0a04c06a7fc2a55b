#include "console/fmwrapper/control.h"
#include "console/model/unicode.h"
#include "tests/soak/soak.h"

#include <algorithm>
#include <cstdio>

namespace vell::soak {
namespace {

using Clock = std::chrono::steady_clock;
using console::StandInFailure;

constexpr std::uint64_t most_host_calls = 5000; // of one call of a function

// One call of a scenario, in whose place the failures come.
struct Target {
    const Scenario* scenario;
    std::size_t position;
    const CallLine& line() const { return (*scenario)[position]; }
};

class Failures {
  public:
    explicit Failures(const Work& work)
        : work_(work), live_(StandIn_TotalLiveObjects()), end_(Clock::now() + work.length) {}

    bool run(std::vector<Target> targets);

  private:
    bool strike(const Target& target);
    bool strike(const Target& target, std::uint64_t n, StandInFailure failure, bool& was_struck);
    Names start(const Target& target); // what stands before the call has been done
    bool check(const Target& target, const std::u16string& result, const std::u16string& expected,
               StandInFailure failure);

    const Work& work_;
    const std::int64_t live_;
    const Clock::time_point end_;
    std::size_t struck_ = 0;
};

bool Failures::run(std::vector<Target> targets) {
    Random random(work_.seed);
    for (std::size_t i = targets.size(); i > 1; --i)
        std::swap(targets[i - 1], targets[below(i, random)]);
    std::size_t done = 0;
    bool is_fine = true;
    for (const Target& target : targets) {
        if (Clock::now() >= end_)
            break;
        is_fine &= strike(target);
        ++done;
    }
    std::printf("%zu failures of the host in %zu of %zu calls\n", struck_, done, targets.size());
    return is_fine && struck_ > 0;
}

bool Failures::strike(const Target& target) {
    for (const StandInFailure failure : {StandInFailure::Allocation, StandInFailure::Unknown}) {
        bool was_struck = true;
        for (std::uint64_t n = 1; was_struck; ++n) {
            if (n > most_host_calls || !strike(target, n, failure, was_struck))
                return false;
            if (Clock::now() >= end_)
                return true;
        }
    }
    return true;
}

// Folders are another one for each call: a call that fails late may have done its work.
bool Failures::strike(const Target& target, std::uint64_t n, StandInFailure failure,
                      bool& was_struck) {
    const Names names = start(target);
    const std::u16string calculation = filled_in(target.line().calculation, names);
    const std::u16string expected = filled_in(target.line().expected.value_or(u""), names);
    work_.host.fail_calls(n, failure);
    const std::u16string result = result_of(work_.session, calculation);
    was_struck = work_.host.failure_delivered();
    const std::string struck = work_.host.failed_call();
    work_.host.fail_calls(0);
    bool is_fine = StandIn_TotalLiveObjects() == live_;
    if (was_struck) {
        ++struck_;
        is_fine &= check(target, result, expected, failure);
    } else if (target.line().expected) {
        is_fine &= is_expected(result, expected);
    }
    if (!is_fine)
        std::printf("line %zu, host call %llu (%s): %s\n  gave %s%s\n", target.line().line,
                    static_cast<unsigned long long>(n), struck.c_str(),
                    utf8_from_utf16(calculation).c_str(),
                    utf8_from_utf16(result.substr(0, 200)).c_str(),
                    StandIn_TotalLiveObjects() == live_ ? "" : ", and left host objects");
    return is_fine;
}

Names Failures::start(const Target& target) {
    Random random(work_.seed); // the same names each time
    const Names names = chosen_names(work_.workplace, work_.workplace.examples(),
                                     work_.workplace.empty_folder(L"failures"), random);
    for (std::size_t i = 0; i < target.position; ++i)
        static_cast<void>(
            result_of(work_.session, filled_in((*target.scenario)[i].calculation, names)));
    return names;
}

// A calculation that looks at a result, such as a comparison, has one of its own; and a failure
// that is to be told may not be told either, which the host then tells.
bool Failures::check(const Target& target, const std::u16string& result,
                     const std::u16string& expected, StandInFailure failure) {
    const std::u16string& calculation = target.line().calculation;
    const bool is_plain =
        calculation.starts_with(u"VlFile_") &&
        (calculation.ends_with(u" )") || calculation.find(u' ') == calculation.npos) &&
        calculation.find(u" = ") == calculation.npos &&
        calculation.find(u"VlFile_", 1) == calculation.npos;
    const std::u16string_view code = failure == StandInFailure::Allocation ? u"$$-108" : u"$$-4298";
    return !is_plain || result == code ||
           (expected.starts_with(u"$$") && result.starts_with(u"ERROR: "));
}

} // namespace

bool soak_failures(const Work& work) {
    const auto scenarios = read_scenarios(work.texts / "calls.txt");
    if (!scenarios) {
        std::printf("%s\n", scenarios.error().c_str());
        return false;
    }
    std::vector<Target> targets;
    for (const Scenario& scenario : *scenarios)
        for (std::size_t i = 0; i < scenario.size(); ++i)
            targets.push_back({&scenario, i});
    return Failures(work).run(std::move(targets));
}

} // namespace vell::soak
