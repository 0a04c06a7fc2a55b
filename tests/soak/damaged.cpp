#include "console/fmwrapper/control.h"
#include "console/model/unicode.h"
#include "tests/soak/soak.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace vell::soak {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds call_limit(30);
constexpr std::size_t furthest_head = 4096; // most structure stands before

// Ends the process when a call takes too long: nothing else could end the call.
class Watchdog {
  public:
    Watchdog() : thread_(&Watchdog::watch, this) {}
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog() {
        done_ = true;
        thread_.join();
    }

    // The clock of a call begins, and what is told of it is known.
    void begin(std::string call) {
        const std::lock_guard lock(mutex_);
        call_ = std::move(call);
        since_ = Clock::now();
    }

  private:
    void watch() {
        while (!done_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const std::lock_guard lock(mutex_);
            if (call_.empty() || Clock::now() - since_ < call_limit)
                continue;
            std::printf("Takes more than %d s: %s\n", static_cast<int>(call_limit.count()),
                        call_.c_str());
            std::fflush(stdout);
            std::_Exit(1);
        }
    }

    std::mutex mutex_;
    std::string call_;
    Clock::time_point since_;
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

void change_bytes(std::string& bytes, Random& random) {
    const std::size_t end =
        below(2, random) == 0 ? bytes.size() : std::min(bytes.size(), furthest_head);
    for (std::size_t left = 1 + below(8, random); left > 0; --left) {
        char& byte = bytes[below(end, random)];
        switch (below(4, random)) {
        case 0:
            byte = '\xFF';
            break;
        case 1:
            byte = '\0';
            break;
        case 2:
            byte = static_cast<char>(byte ^ (1 << below(8, random)));
            break;
        default:
            byte = static_cast<char>(random());
        }
    }
}

// A piece of it comes a second time, or stays away.
void shift_bytes(std::string& bytes, Random& random) {
    const std::size_t at = below(bytes.size(), random);
    const std::size_t length = 1 + below(64, random);
    if (below(2, random) == 0)
        bytes.erase(at, length);
    else
        bytes.insert(at, bytes.substr(at, length));
}

std::string damaged(std::string bytes, Random& random) {
    if (bytes.empty())
        return bytes;
    const std::size_t kind = below(4, random);
    if (kind != 1)
        change_bytes(bytes, random);
    if (kind == 2)
        shift_bytes(bytes, random);
    if (kind == 1 || kind == 3)
        bytes.resize(below(bytes.size(), random));
    return bytes;
}

class Sweep {
  public:
    Sweep(const Work& work, std::vector<CallLine> calls)
        : work_(work), calls_(std::move(calls)), live_(StandIn_TotalLiveObjects()) {}

    bool run();

  private:
    bool ask_about(const std::filesystem::path& source, std::size_t round);
    bool ask(const CallLine& line, const Names& names, const std::string& place);

    const Work& work_;
    const std::vector<CallLine> calls_;
    const std::int64_t live_;
    Watchdog watchdog_;
    std::size_t files_ = 0;
    std::size_t asked_ = 0;
    std::size_t answered_ = 0; // with something else than a code
    bool is_fine_ = true;
};

bool Sweep::run() {
    const Clock::time_point end = Clock::now() + work_.length;
    Clock::time_point next_told = Clock::now() + std::chrono::minutes(1);
    for (std::size_t round = 0; Clock::now() < end; ++round)
        for (const std::filesystem::path& source : work_.workplace.corpus()) {
            if (Clock::now() >= end)
                break;
            is_fine_ &= ask_about(source, round);
            if (Clock::now() < next_told)
                continue;
            std::printf("%zu files, %zu calls\n", files_, asked_);
            std::fflush(stdout);
            next_told += std::chrono::minutes(1);
        }
    std::printf("%zu damaged files, %zu calls, %zu with an answer\n", files_, asked_, answered_);
    return is_fine_ && asked_ > 0;
}

// The damage depends on the seed, the round and the file's name alone.
bool Sweep::ask_about(const std::filesystem::path& source, std::size_t round) {
    const std::u16string name = source.filename().u16string();
    std::uint64_t seed = work_.seed + round * 7919;
    for (const char16_t c : name)
        seed = seed * 31 + c;
    Random random(seed);
    const std::filesystem::path folder = work_.workplace.empty_folder(L"damaged");
    const std::filesystem::path file =
        folder / (std::u16string(u"file") + source.extension().u16string());
    write_bytes(file, damaged(read_bytes(source), random));
    const std::string place = utf8_from_utf16(name) + " in round " + std::to_string(round);
    // What a crash leaves: the file, and what was asked.
    write_bytes(work_.workplace.folder() / L"damaged.txt", place);
    std::filesystem::create_directory(folder / L"out");
    const Names names{folder_text(folder), {}, file.u16string(), {}};
    ++files_;
    return std::ranges::all_of(calls_,
                               [&](const CallLine& line) { return ask(line, names, place); });
}

bool Sweep::ask(const CallLine& line, const Names& names, const std::string& place) {
    const std::u16string calculation = filled_in(line.calculation, names);
    const std::string told = place + ": " + utf8_from_utf16(calculation);
    watchdog_.begin(told);
    const std::u16string result = result_of(work_.session, calculation);
    watchdog_.begin({});
    ++asked_;
    if (!result.starts_with(u"$$"))
        ++answered_;
    // A failure of the host that was none is an exception that nobody expected.
    const bool is_answer = !result.starts_with(u"$$-4298") && !result.starts_with(u"ERROR: ");
    const bool is_clean = StandIn_TotalLiveObjects() == live_;
    if (!is_answer || !is_clean)
        std::printf("%s\n  %s: %s\n", told.c_str(),
                    is_clean ? "gave" : "left host objects, and gave",
                    utf8_from_utf16(result.substr(0, 200)).c_str());
    return is_answer && is_clean;
}

} // namespace

bool soak_damaged(const Work& work) {
    const auto scenarios = read_scenarios(work.texts / "reading_calls.txt");
    return Sweep(work, scenarios.front()).run();
}

} // namespace vell::soak
