// What happens when a system exception escapes a guarded call: a minidump, lines for a log, and the
// end of the process. Windows only.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace vell::windows {

struct CrashReports {
    std::string_view dump_start;              // what the names of dumps begin with; zero-terminated
    void (*note)(std::string_view) = nullptr; // takes the lines
};

// Tells how crashes are reported, before the first guarded call.
void report_crashes(const CrashReports& reports);

// "<start>-<local time>-<process>-<thread>-<digits>.dmp".
std::wstring crash_dump_name(std::string_view start, const SYSTEMTIME& local_time, DWORD process_id,
                             DWORD thread_id, std::wstring_view digits);

} // namespace vell::windows

// The exception handler of guarded_call.
extern "C" EXCEPTION_DISPOSITION guarded_call_exception(EXCEPTION_RECORD* record, void* frame,
                                                        CONTEXT* context, void* dispatcher);
