#include "console/model/unicode.h"
#include "tests/soak/figures.h"
#include "tests/soak/gate.h"
#include "tests/soak/random_calls.h"
#include "tests/soak/soak.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

namespace vell::soak {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t thread_count = 8;
constexpr std::size_t random_calls_at_once = 25;
constexpr std::size_t most_told = 20; // wrong results

class Mixed {
  public:
    Mixed(const Work& work, std::vector<Scenario> scenarios)
        : work_(work), scenarios_(std::move(scenarios)), random_calls_(work.host, work.reference) {}

    bool run();

  private:
    void serve(std::size_t thread);
    void run_scenario(const std::filesystem::path& examples, const std::filesystem::path& folder,
                      Random& random);
    void call_at_random(const std::filesystem::path& folder, Random& random);
    std::vector<Figures> watch();
    void complain(const std::string& text, const std::filesystem::path& folder = {});

    const Work& work_;
    const std::vector<Scenario> scenarios_;
    const RandomCalls random_calls_;
    Gate gate_;
    std::atomic<bool> done_ = false;
    std::mutex complaints_;
    std::size_t wrong_ = 0;
};

bool Mixed::run() {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < thread_count; ++i)
        threads.emplace_back(&Mixed::serve, this, i);
    const std::vector<Figures> samples = watch();
    done_ = true;
    for (std::thread& thread : threads)
        thread.join();
    // What is made once settles over minutes: lists of free pieces of eight threads, encodings,
    // fonts, handles of the system's libraries. A short run sees only what grows fast.
    const bool is_long = work_.length >= std::chrono::minutes(10);
    const bool is_flat =
        tell_growth(samples, is_long ? Bounds{8 * megabyte, 8, 1} : Bounds{48 * megabyte, 64, 2});
    if (wrong_ > 0)
        std::printf("%zu results were not as expected\n", wrong_);
    return is_flat && wrong_ == 0;
}

void Mixed::serve(std::size_t thread) {
    Random random(work_.seed * 1000 + thread);
    const std::wstring name = std::to_wstring(thread);
    const std::filesystem::path examples = work_.workplace.examples_for(name);
    std::filesystem::path folder;
    for (std::size_t round = 0; !done_; ++round) {
        // While another thread lists it, a deleted folder is there until that has ended, and a new
        // one of its name would go with it.
        delete_all(folder);
        folder = work_.workplace.empty_folder(name + L'_' + std::to_wstring(round));
        try {
            if (below(2, random) == 0)
                run_scenario(examples, folder, random);
            else
                call_at_random(folder, random);
        } catch (const std::exception& error) {
            complain(std::string("an exception: ") + error.what());
        }
    }
}

void Mixed::run_scenario(const std::filesystem::path& examples, const std::filesystem::path& folder,
                         Random& random) {
    const Names names = chosen_names(work_.workplace, examples, folder, random);
    for (const CallLine& line : scenarios_[below(scenarios_.size(), random)]) {
        if (done_)
            return;
        const auto pass = gate_.pass();
        const std::u16string calculation = filled_in(line.calculation, names);
        const std::u16string result = result_of(work_.session, calculation);
        if (line.expected && !is_expected(result, filled_in(*line.expected, names)))
            return complain("line " + std::to_string(line.line) + ": " +
                                utf8_from_utf16(calculation) + "\n  gave " +
                                utf8_from_utf16(result.substr(0, 200)),
                            folder);
    }
}

void Mixed::call_at_random(const std::filesystem::path& folder, Random& random) {
    RandomCalls::prepare(work_.workplace, folder, random);
    for (std::size_t i = 0; i < random_calls_at_once && !done_; ++i) {
        const auto pass = gate_.pass();
        if (const auto result = random_calls_.call(folder, random); !result)
            complain("a call with random parameters: " + result.error());
    }
}

std::vector<Figures> Mixed::watch() {
    const Clock::time_point start = Clock::now();
    const milliseconds length = work_.length;
    const milliseconds pause = std::clamp(length / 120, milliseconds(250), milliseconds(10'000));
    const milliseconds told_every = std::min(length / 5, milliseconds(60'000));
    milliseconds next_told = told_every;
    std::vector<Figures> samples;
    for (auto past = milliseconds(0); past < length;) {
        std::this_thread::sleep_for(pause);
        const std::size_t calls = gate_.closed([&](std::size_t until_now) {
            samples.push_back(current_figures());
            return until_now;
        });
        past = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
        if (past < next_told && samples.size() > 1)
            continue;
        std::printf("%6.1f s: %zu calls, %s\n", static_cast<double>(past.count()) / 1000, calls,
                    text_of(samples.back()).c_str());
        std::fflush(stdout);
        while (next_told <= past)
            next_told += told_every;
    }
    return samples;
}

// What the call has left in a folder is copied to where nothing deletes it.
void Mixed::complain(const std::string& text, const std::filesystem::path& folder) {
    const std::lock_guard lock(complaints_);
    if (++wrong_ > most_told)
        return;
    std::printf("%s\n", text.c_str());
    if (!folder.empty()) {
        std::filesystem::path kept = folder.parent_path();
        kept += L"_kept_" + std::to_wstring(wrong_);
        std::error_code ignored;
        std::filesystem::copy(folder, kept, std::filesystem::copy_options::recursive, ignored);
        std::printf("  its files are kept in %s\n", utf8_from_utf16(kept.u16string()).c_str());
    }
    std::fflush(stdout);
}

// A function that no scenario calls would be called with random parameters alone.
bool all_are_called(const console::PluginHost& host, const std::vector<Scenario>& scenarios) {
    std::u16string calls;
    for (const Scenario& scenario : scenarios)
        for (const CallLine& line : scenario)
            calls += line.calculation + u"\n";
    bool is_complete = true;
    for (const console::RegisteredFunction& function : host.functions()) {
        const bool is_called = calls.find(function.name + u"(") != calls.npos ||
                               calls.find(function.name + u"\n") != calls.npos;
        if (!is_called)
            std::printf("calls.txt does not call %s\n", utf8_from_utf16(function.name).c_str());
        is_complete &= is_called;
    }
    return is_complete;
}

} // namespace

bool soak_mixed(const Work& work) {
    const auto scenarios = read_scenarios(work.texts / "calls.txt");
    return all_are_called(work.host, scenarios) && Mixed(work, scenarios).run();
}

} // namespace vell::soak
