// A line of the audit log: a JSON object that tells of one call.
#pragma once

#include "src/params/calendar_time.h"
#include "src/policy/call_origin.h"
#include "src/policy/call_scope.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::policy {

// A moment as the clock on the wall shows it.
struct Moment {
    params::CalendarTime local = {};
    int milliseconds = 0;
    int minutes_from_utc = 0;
};

// "2026-03-01T09:05:00.123+01:00"
std::string text_of(const Moment& moment);

struct CallLine {
    Moment end; // of the call
    CallOrigin origin;
    std::string_view function;
    std::int32_t result = 0;
};

// Each line ends with a line feed and holds no other: control characters and line ends of any kind
// in names become U+FFFD.
std::string line_of(const CallLine& call, const CallScope& scope);

// Lines about the log itself.
std::string event_line(const Moment& moment, std::string_view event, std::string_view detail);
std::string lost_line(const Moment& moment, std::uint64_t lines);

} // namespace vell::policy
