// What happens when a system exception escapes a function's body: a minidump, log lines on a server
// host, and the end of the process.
#pragma once

#include <windows.h>

#include <string>

namespace vell::host {

// "Crashdump Vell File Plug-In v14.0-<local time>-<process>-<thread>.dmp" in `folder`, which ends
// with "\".
std::wstring crash_dump_name(std::wstring_view folder, const SYSTEMTIME& local_time,
                             DWORD process_id, DWORD thread_id);

} // namespace vell::host

// The exception handler of guarded_call.
extern "C" EXCEPTION_DISPOSITION guarded_call_exception(EXCEPTION_RECORD* record, void* frame,
                                                        CONTEXT* context, void* dispatcher);
