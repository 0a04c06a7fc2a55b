#include "src/files/commands/running_command.h"

#include <algorithm>
#include <array>

namespace vell::files {
namespace {

constexpr std::size_t longest_read = 2000;
constexpr std::uint32_t longest_pause = 10; // milliseconds

// The pause between two looks at the output: none as long as output comes, so that a command which
// writes much is not held up, then longer ones.
class Pause {
  public:
    std::uint32_t next(bool received) {
        length_ = received ? 0 : std::min(longest_pause, 2 * length_ + 1);
        return length_;
    }
    std::uint32_t length() const { return length_; }

  private:
    std::uint32_t length_ = 0;
};

enum class Drained : std::uint8_t { Nothing, Some, End };

// Reads what is waiting at this moment.
Result<Drained> drain(RunningCommand& command, CommandOutput& output) {
    const std::optional<std::size_t> waiting = command.waiting_output();
    if (!waiting)
        return Drained::End;
    std::array<char, longest_read> buffer;
    for (std::size_t left = *waiting; left > 0;) {
        const std::size_t done =
            VELL_TRY(command.read(std::span(buffer).first(std::min(left, buffer.size()))));
        if (done == 0)
            return Drained::End;
        output.append({buffer.data(), done});
        left -= std::min(done, left);
    }
    return *waiting > 0 ? Drained::Some : Drained::Nothing;
}

Result<void> drain_after_exit(RunningCommand& command, Clock& clock, Ticks longest,
                              CommandOutput& output) {
    const Ticks deadline = ticks_at(clock.milliseconds()) + std::max<Ticks>(longest, 0);
    Pause pause;
    for (;;) {
        const Drained drained = VELL_TRY(drain(command, output));
        if (drained == Drained::End || ticks_at(clock.milliseconds()) >= deadline)
            return {};
        command.wait(pause.next(drained == Drained::Some));
    }
}

} // namespace

Result<void> collect_output(RunningCommand& command, Clock& clock, const CommandSettings& settings,
                            CommandOutput& output) {
    std::uint64_t now = clock.milliseconds();
    Ticks deadline = ticks_at(now) + settings.time_limit;
    const Ticks longest_silence = std::max(settings.time_limit, ticks_per_second);
    // Looks at the output that follow each other at once are one pass.
    std::uint64_t next_pass = now;
    Pause pause;
    while (!VELL_TRY(command.has_ended())) {
        command.wait(pause.length());
        const bool received = VELL_TRY(drain(command, output)) == Drained::Some;
        pause.next(received);
        now = clock.milliseconds();
        if (received && now >= next_pass) {
            deadline = std::min(deadline + ticks_per_second, ticks_at(now) + longest_silence);
            next_pass = now + longest_pause;
        }
        if (ticks_at(now) > deadline)
            return Failure{ErrorCode::TimeLimitPassed};
    }
    return drain_after_exit(command, clock, settings.wait_after_exit, output);
}

} // namespace vell::files
