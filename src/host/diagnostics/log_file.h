// The permanent log: lines appended to a file, one at a time, from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::host {

enum class LogChannel : std::int16_t {
    Server = 1,
    Web = 2,
    Debug = 101,
};

// "Vell Plugin FMServer.log" for every channel that has no file of its own.
std::wstring_view log_file_name(LogChannel channel);

// A log never grows beyond this: a line that would not fit moves what is there to the old log,
// whose own lines go. So a channel has twice this on the disk at most.
inline constexpr std::uint64_t log_size_limit = 64 * 1024 * 1024;
std::wstring old_log_file_name(LogChannel channel); // "Vell Plugin FMServer (old).log"

// The folder of the log files below that of the host program's executable: "Logs" on server and web
// hosts, "Vell Logs" elsewhere. Ends with "\".
std::wstring log_folder(std::wstring_view executable, bool server_or_web);

// The line as it stands in the file: time, source, text, CR LF; at most 1023 bytes, cut between
// characters. `text` is UTF-8; its line ends become CR LF.
std::string log_line_text(std::string_view local_time, std::string_view source, std::string text);

// Writes a line under the plug-in's name to the log of this host: web hosts have one of their own.
// Never fails: a file that cannot be had is reported once on the error output, and a full one that
// somebody keeps from being moved takes no lines.
void log_line(std::string_view text);

// The same to a channel of the caller's choice.
void log_line(LogChannel channel, std::string_view source, std::string_view text);

} // namespace vell::host
