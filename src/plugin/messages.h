// The host's messages, and the numbers that come and go with them.
#pragma once

#include <cstdint>

namespace vell::plugin {

enum class Message : std::uint8_t {
    StartUp = 0,
    Idle = 1,
    ShutDown = 4,
    Preferences = 5,
    StringQuery = 7,
    SessionShutdown = 8,
    FileShutdown = 9,
};

// Answers to Message::StartUp.
inline constexpr std::int64_t startup_accepted = 59;
inline constexpr std::int64_t startup_bad_version = -1;

// String numbers of Message::StringQuery.
enum class PluginString : std::uint8_t { Name = 128, Description = 129, Options = 131, Help = 132 };

} // namespace vell::plugin
