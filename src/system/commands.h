// Commands of the system's interpreter.
#pragma once

#include "src/base/result.h"
#include "src/params/encodings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vell::files {

// Time as a count that goes on by three every 100 milliseconds; limits are checked at that grain.
using Ticks = std::int64_t;
constexpr Ticks ticks_at(std::uint64_t milliseconds) {
    return static_cast<Ticks>(milliseconds / 100 * 3);
}
inline constexpr Ticks ticks_per_second = 60; // of a limit

struct CommandSettings {
    Ticks time_limit = 20 * ticks_per_second;
    Ticks wait_after_exit = 240; // for others that write to the ended command's output
    bool show_window = false;
    bool wait_on_result = true;
    // With the command end those that it has started, and all of them with their owner's interest
    // in the result.
    bool ends_with_children = false;
    params::TextEncoding encoding = params::TextEncoding::Utf8;
};

// What it owns is released with it; the command itself goes on.
class RunningCommand {
  public:
    RunningCommand() = default;
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;
    virtual ~RunningCommand() = default;

    virtual Result<bool> has_ended() = 0;
    // Waits so long, or less when the command ends meanwhile.
    virtual void wait(std::uint32_t milliseconds) = 0;
    // Bytes of output that can be read at once; nullopt when there are none and nobody is left who
    // could write.
    virtual std::optional<std::size_t> waiting_output() = 0;
    virtual Result<std::size_t> read(std::span<char> buffer) = 0;
};

// What stands before a command in the command line of the system's interpreter.
inline constexpr std::u16string_view interpreter_call = u"cmd /c ";

class Commands {
  public:
    virtual ~Commands() = default;

    // Starts the system's command interpreter with this command.
    virtual Result<std::unique_ptr<RunningCommand>> start(const std::u16string& command,
                                                          const CommandSettings& settings) = 0;
};

} // namespace vell::files
