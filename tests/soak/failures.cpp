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

// What became of a call in which a call of the host failed.
struct Struck {
    StandInFailure failure;
    std::string host_call;
    std::u16string result;
};

// `whole` is the result of a call without failures.
class Failures {
  public:
    explicit Failures(const Work& work)
        : work_(work), live_(StandIn_TotalLiveObjects()), end_(Clock::now() + work.length) {}

    bool run(std::vector<Target> targets);

  private:
    bool strike(const Target& target);
    bool strike(const Target& target, std::uint64_t n, StandInFailure failure,
                const std::u16string& whole, bool& was_struck);
    Names start(const Target& target); // what stands before the call has been done
    bool check(const Target& target, const Names& names, const Struck& struck,
               const std::u16string& whole);
    bool gives_the_rest(const Target& target, const Names& names);

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
    const Names names = start(target);
    const std::u16string whole =
        result_of(work_.session, filled_in(target.line().calculation, names));
    for (const StandInFailure failure : {StandInFailure::Allocation, StandInFailure::Unknown}) {
        bool was_struck = true;
        for (std::uint64_t n = 1; was_struck; ++n) {
            if (n > most_host_calls || !strike(target, n, failure, whole, was_struck))
                return false;
            if (Clock::now() >= end_)
                return true;
        }
    }
    return true;
}

// Folders are another one for each call: a call that fails late may have done its work.
bool Failures::strike(const Target& target, std::uint64_t n, StandInFailure failure,
                      const std::u16string& whole, bool& was_struck) {
    const Names names = start(target);
    const std::u16string calculation = filled_in(target.line().calculation, names);
    work_.host.fail_calls(n, failure);
    Struck struck{failure, {}, result_of(work_.session, calculation)};
    was_struck = work_.host.failure_delivered();
    struck.host_call = work_.host.failed_call();
    work_.host.fail_calls(0);
    const bool left_objects = StandIn_TotalLiveObjects() != live_;
    bool is_fine = !left_objects;
    if (was_struck) {
        ++struck_;
        is_fine &= check(target, names, struck, whole);
    } else if (target.line().expected) {
        is_fine &= is_expected(struck.result, filled_in(*target.line().expected, names));
    }
    if (!is_fine)
        std::printf("line %zu, host call %llu (%s): %s\n  gave %s%s\n", target.line().line,
                    static_cast<unsigned long long>(n), struck.host_call.c_str(),
                    utf8_from_utf16(calculation).c_str(),
                    utf8_from_utf16(struck.result.substr(0, 200)).c_str(),
                    left_objects ? ", and left host objects" : "");
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

// A code that cannot be set as the result either is told by the host.
bool tells_code(const std::u16string& result, const std::u16string& whole) {
    return whole.starts_with(u"$$") && result.starts_with(u"ERROR: ") &&
           result.ends_with(u" host error " + whole.substr(2));
}

// Each failure has to be told, by its own code. Only when the host refuses to encode a text,
// without a lack of memory, that encoding may lack a character: then the function says so, or takes
// another one, which loses nothing when the calls behind it give what they give otherwise.
bool Failures::check(const Target& target, const Names& names, const Struck& struck,
                     const std::u16string& whole) {
    const std::u16string& calculation = target.line().calculation;
    if (calculation.find(u"VlFile_", 1) != calculation.npos)
        return true; // both functions are struck, and give the same code
    if (calculation.find(u" = ") != calculation.npos)
        return struck.result == u"0"; // a code is no date
    const bool is_unencodable =
        struck.failure == StandInFailure::Unknown && struck.host_call == "FM_Text_GetBytes";
    if (is_unencodable && struck.result == whole)
        return gives_the_rest(target, names);
    return struck.result ==
               (struck.failure == StandInFailure::Allocation ? u"$$-108" : u"$$-4298") ||
           (is_unencodable && struck.result == u"VellParamErr: XP7_GetBytesImproved failed") ||
           tells_code(struck.result, whole);
}

bool Failures::gives_the_rest(const Target& target, const Names& names) {
    for (std::size_t i = target.position + 1; i < target.scenario->size(); ++i) {
        const CallLine& line = (*target.scenario)[i];
        const std::u16string result = result_of(work_.session, filled_in(line.calculation, names));
        if (line.expected && !is_expected(result, filled_in(*line.expected, names)))
            return false;
    }
    return true;
}

} // namespace

bool soak_failures(const Work& work) {
    const auto scenarios = read_scenarios(work.texts / "calls.txt");
    std::vector<Target> targets;
    for (const Scenario& scenario : scenarios)
        for (std::size_t i = 0; i < scenario.size(); ++i)
            targets.push_back({&scenario, i});
    return Failures(work).run(std::move(targets));
}

} // namespace vell::soak
