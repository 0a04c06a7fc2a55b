#include "src/policy/audit_line.h"

#include "src/base/json_writer.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace vell::policy {
namespace {

// What a reader of the log may take for the end of a line, or that changes the order of a line's
// letters on the screen.
bool is_misleading(char16_t unit) {
    return unit < u' ' || (unit >= 0x7F && unit < 0xA0) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

std::u16string harmless(std::u16string_view text) {
    std::u16string clean(text);
    std::ranges::replace_if(clean, is_misleading, replacement_character);
    return clean;
}

void write_paths(JsonWriter& json, std::string_view name, Access access, const CallScope& scope) {
    const std::vector<std::u16string>& paths = scope.paths(access);
    const auto is_told = [&](const std::u16string& path) {
        // What is written or deleted has been looked at before.
        return access != Access::Read || (!std::ranges::count(scope.paths(Access::Write), path) &&
                                          !std::ranges::count(scope.paths(Access::Delete), path));
    };
    if (std::ranges::none_of(paths, is_told))
        return;
    json.key(name);
    json.begin_array();
    for (const std::u16string& path : paths)
        if (is_told(path))
            json.value(harmless(path));
    json.end_array();
    if (const std::uint64_t more = scope.paths_left_out(access); more > 0)
        json.member_number(std::string(name) + "More", more);
}

void begin_line(JsonWriter& json, const Moment& moment) {
    json.begin_object();
    json.member("time", text_of(moment));
}

std::string end_line(JsonWriter& json) {
    json.end_object();
    return json.take() + '\n';
}

} // namespace

std::string text_of(const Moment& moment) {
    const params::CalendarTime& local = moment.local;
    const int offset = std::abs(moment.minutes_from_utc);
    std::array<char, 96> text;
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02d:%02d",
                  local.year, local.month, local.day, local.hour, local.minute, local.second,
                  moment.milliseconds, moment.minutes_from_utc < 0 ? '-' : '+', offset / 60,
                  offset % 60);
    return text.data();
}

std::string line_of(const CallLine& call, const CallScope& scope) {
    JsonWriter json;
    begin_line(json, call.end);
    if (call.origin.session)
        json.member_number("session", *call.origin.session);
    if (call.origin.file)
        json.member_number("file", *call.origin.file);
    if (!call.origin.account.empty())
        json.member("account", harmless(call.origin.account));
    json.member("function", call.function);
    write_paths(json, "read", Access::Read, scope);
    write_paths(json, "written", Access::Write, scope);
    write_paths(json, "deleted", Access::Delete, scope);
    json.member_number("result", call.result);
    if (scope.is_refused()) {
        json.member("refused", std::string_view(scope.refusal().reason));
        if (!scope.refusal().path.empty())
            json.member("refusedPath", harmless(scope.refusal().path));
    }
    json.member_number("ms", scope.milliseconds());
    return end_line(json);
}

std::string event_line(const Moment& moment, std::string_view event, std::string_view detail) {
    JsonWriter json;
    begin_line(json, moment);
    json.member("event", event);
    if (!detail.empty())
        json.member("detail", harmless(utf16_from_utf8(detail)));
    return end_line(json);
}

std::string lost_line(const Moment& moment, std::uint64_t lines) {
    JsonWriter json;
    begin_line(json, moment);
    json.member("event", std::string_view("lost"));
    json.member_number("lines", lines);
    return end_line(json);
}

} // namespace vell::policy
