// The files behind Logs: lines appended one at a time, and what memory is too small for. Windows
// only.
#pragma once

#include "src/system/logs.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::windows {

using files::LogChannel;
using files::LogFolder;

// "Vell Plugin FMServer.log" for every channel that has no file of its own.
std::wstring_view log_file_name(LogChannel channel);

// A log never grows beyond this: a line that would not fit moves what is there to the old log,
// whose own lines go. So a channel has twice this on the disk at most.
inline constexpr std::uint64_t log_size_limit = 64 * 1024 * 1024;
std::wstring old_log_file_name(LogChannel channel); // "Vell Plugin FMServer (old).log"

// The folder of the log files below that of the host program's executable: "Logs" where the host
// has one, "Vell Logs" elsewhere. Ends with "\".
std::wstring log_folder(std::wstring_view executable, LogFolder folder);

// The one of this process with the host's own logs, made where it is missing; empty where it cannot
// be.
std::u16string own_log_folder();

// The line as it stands in the file: time, source, text, CR LF; at most 1023 bytes, cut between
// characters. `text` is UTF-8; its line ends become CR LF.
std::string log_line_text(std::string_view local_time, std::string_view source, std::string text);

} // namespace vell::windows
