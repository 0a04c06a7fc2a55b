#include "src/windows/process/crash_report.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/windows/handle.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/private_items.h"
#include "src/windows/text.h"

#include <dbghelp.h>

#include <array>
#include <cwchar>

namespace vell::windows {
namespace {

CrashReports reports;

struct Crash {
    EXCEPTION_POINTERS exception;
    DWORD thread_id;
};

// The name of the dump, empty when none was written.
std::wstring write_dump(Crash& crash) {
    const UniqueModule library(
        LoadLibraryExW(L"dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!library)
        return {};
    const auto write = reinterpret_cast<decltype(&MiniDumpWriteDump)>(
        reinterpret_cast<void*>(GetProcAddress(library.get(), "MiniDumpWriteDump")));
    const auto folder = temporary_folder();
    const auto digits = random_uuid();
    if (!write || !folder || !digits)
        return {};

    SYSTEMTIME now;
    GetLocalTime(&now);
    std::wstring name = *folder + crash_dump_name(reports.dump_start, now, GetCurrentProcessId(),
                                                  crash.thread_id, *digits);
    const UniqueFile file =
        create_private_file(name, FILE_SHARE_READ | FILE_SHARE_WRITE, FILE_ATTRIBUTE_NORMAL);
    if (!file)
        return {};
    MINIDUMP_EXCEPTION_INFORMATION information{crash.thread_id, &crash.exception, FALSE};
    if (!write(GetCurrentProcess(), GetCurrentProcessId(), file.get(), MiniDumpNormal, &information,
               nullptr, nullptr))
        return {};
    return name;
}

DWORD WINAPI report(void* argument) {
    Crash& crash = *static_cast<Crash*>(argument);
    const std::wstring dump = write_dump(crash);
    if (reports.note) {
        reports.note("Exception raised. code = " +
                     to_text(std::uint64_t{crash.exception.ExceptionRecord->ExceptionCode}));
        reports.note(dump.empty() ? "Could not create dumpfile."
                                  : "Created crash dumpfile: " + utf8_from_utf16(to_utf16(dump)));
        reports.note("**** FATAL ERROR: EXIT PROCESS ****");
    }
    return 0;
}

} // namespace

void report_crashes(const CrashReports& how) {
    reports = how;
}

std::wstring crash_dump_name(std::string_view start, const SYSTEMTIME& local_time, DWORD process_id,
                             DWORD thread_id, std::wstring_view digits) {
    std::array<wchar_t, 128> name;
    std::swprintf(name.data(), name.size(), L"%hs-%04d%02d%02d-%02d%02d%02d-%ld-%ld-", start.data(),
                  local_time.wYear, local_time.wMonth, local_time.wDay, local_time.wHour,
                  local_time.wMinute, local_time.wSecond, static_cast<long>(process_id),
                  static_cast<long>(thread_id));
    return std::wstring(name.data()).append(digits).append(L".dmp");
}

} // namespace vell::windows

extern "C" EXCEPTION_DISPOSITION guarded_call_exception(EXCEPTION_RECORD* record, void*,
                                                        CONTEXT* context, void*) {
    constexpr DWORD unwinding = 0x2 | 0x4;      // EXCEPTION_UNWINDING, EXCEPTION_EXIT_UNWIND
    constexpr DWORD customer_bit = 1u << 29;    // set in codes that programs raise themselves
    constexpr DWORD first_warning = 0x80000000; // below: notes to debuggers
    if ((record->ExceptionFlags & unwinding) != 0 || (record->ExceptionCode & customer_bit) != 0 ||
        record->ExceptionCode < first_warning)
        return ExceptionContinueSearch;

    // On a thread of its own: the crashed one may have no stack left.
    vell::windows::Crash crash{{record, context}, GetCurrentThreadId()};
    const vell::UniqueHandle thread(
        CreateThread(nullptr, 0, vell::windows::report, &crash, 0, nullptr));
    constexpr DWORD longest_report_ms = 60'000; // the crash may have left a lock taken
    if (thread)
        WaitForSingleObject(thread.get(), longest_report_ms);
    else
        vell::windows::report(&crash);
    TerminateProcess(GetCurrentProcess(), 1);
    return ExceptionContinueSearch;
}
