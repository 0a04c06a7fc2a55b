// The functions on files, against native tools (timed by bench/run on the same files) and against
// the bare Windows calls in this process.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"

#include <chrono>
#include <functional>
#include <string>

namespace vell::bench {
namespace {

// Best of some rounds, in nanoseconds; `reset` runs untimed before each.
double best_of(int rounds, const std::function<void()>& work,
               const std::function<void()>& reset = {}) {
    using Clock = std::chrono::steady_clock;
    double best = 1e300;
    for (int round = 0; round < rounds; ++round) {
        if (reset)
            reset();
        const auto start = Clock::now();
        work();
        best =
            std::min(best, std::chrono::duration<double, std::nano>(Clock::now() - start).count());
    }
    return best;
}

std::wstring environment(const wchar_t* name) {
    std::wstring value(32'767, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

// Nanoseconds that the native tool took; 0 when bench/run did not time it.
double native_ns(const wchar_t* name) {
    const std::wstring value = environment(name);
    return value.empty() ? 0 : std::stod(value);
}

std::wstring data_path(const wchar_t* name) {
    return environment(L"VELL_BENCH_DATA") + L"\\" + name;
}

Row substitute_row(const char* name, std::u16string_view switches, std::u16string_view search,
                   const wchar_t* native, double goal) {
    const std::wstring target = data_path(L"substituted.txt");
    FunctionCall call(
        4283, {switches, to_utf16(data_path(L"text.txt")), to_utf16(target), search, u"Rechnung"});
    const double ours = best_of(
        3, [&] { call.run(); }, [&] { DeleteFileW(target.c_str()); });
    DeleteFileW(target.c_str());
    return {name, ours, native_ns(native), goal, "peer: sed, native"};
}

Row hash_row(const char* name, std::u16string_view switches, const wchar_t* native) {
    FunctionCall call(4301, {switches, to_utf16(data_path(L"text.txt"))});
    return {name, best_of(3, [&] { call.run(); }), native_ns(native), 1.0, "peer: the native tool"};
}

// What a listing cannot do without.
void bare_walk(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((folder + L"*.*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring_view name = entry.cFileName;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && name != L"." && name != L"..")
            bare_walk(folder + std::wstring(name) + L"\\");
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

Row listing_row() {
    const std::wstring folder = data_path(L"tree\\");
    FunctionCall call(4254, {u"files folders -recursive", to_utf16(folder)});
    call.run(); // the file system's caches are warm for both
    const double ours = best_of(3, [&] { call.run(); });
    const double peer = best_of(3, [&] { bare_walk(folder); });
    return {"VlFile_ListFolder, 100,000 files in 100 folders", ours, peer, 1.3,
            "peer: a bare find-first/find-next walk"};
}

Row copy_row() {
    const std::wstring source = data_path(L"gigabyte.bin");
    const std::wstring target = data_path(L"copied.bin");
    FunctionCall call(4210, {u"", to_utf16(source), to_utf16(target)});
    const auto reset = [&] {
        DeleteFileW(target.c_str());
    };
    const double ours = best_of(
        3, [&] { call.run(); }, reset);
    const double peer = best_of(
        3, [&] { CopyFileW(source.c_str(), target.c_str(), TRUE); }, reset);
    reset();
    return {"VlFile_CopyFile, 1 GiB", ours, peer, 1.1, "peer: CopyFileW"};
}

Row append_row() {
    const std::wstring target = data_path(L"appended.txt");
    DeleteFileW(target.c_str());
    UniqueFile(CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    const std::u16string text(100, u'x');
    FunctionCall call(4308, {u"-Encoding=UTF8", to_utf16(target), text});
    const auto thousand = [&] {
        for (int i = 0; i < 1000; ++i)
            call.run();
    };
    const double first = best_of(3, thousand);
    for (int i = 0; i < 4; ++i)
        thousand();
    const double last = best_of(3, thousand);
    DeleteFileW(target.c_str());
    return {"VlFile_AppendToFile, the last 3,000 of 10,000 appends", last, first, 1.1,
            "peer: the first 3,000"};
}

// Runs a command and reads its output to the end, which is thrown away.
void bare_pipe(std::wstring command) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    CreatePipe(&read_end, &write_end, &inherited, 0);
    SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);
    UniqueHandle reader(read_end);
    UniqueHandle writer(write_end);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = write_end;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startup, &process))
        return;
    const UniqueHandle handle(process.hProcess);
    const UniqueHandle thread(process.hThread);
    writer.reset();
    std::string buffer(2000, '\0');
    DWORD done = 0;
    while (ReadFile(reader.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &done, nullptr))
        continue;
}

Row shell_row() {
    const std::wstring command = L"type \"" + data_path(L"hundred.txt") + L"\"";
    FunctionCall call(4295, {u"-TimeoutSecs=600", to_utf16(command)});
    const double ours = best_of(1, [&] { call.run(); });
    const double peer = best_of(1, [&] { bare_pipe(L"cmd /c " + command); });
    return {"VlFile_ExecuteShell, 100 MB of output", ours, peer, 2.0,
            "peer: the same command into a pipe that is only read"};
}

} // namespace

std::vector<Row> file_rows() {
    if (environment(L"VELL_BENCH_DATA").empty())
        return {}; // started without bench/run
    return {
        substitute_row("VlFile_Substitute, 256 MiB, a few hits a kilobyte", u"", u"Invoice",
                       L"VELL_SED_HITS", 0.7),
        substitute_row("VlFile_Substitute, 256 MiB, no hit", u"", u"Zebra crossing",
                       L"VELL_SED_NONE", 0.7),
        substitute_row("VlFile_Substitute, IgnoreCase", u"IgnoreCase", u"iNVOICE", L"VELL_SED_CASE",
                       0.3),
        hash_row("VlFile_GetFileHash, SHA-1, 256 MiB", u"-SHA1", L"VELL_SHA1SUM"),
        hash_row("VlFile_GetFileHash, MD5, 256 MiB", u"-MD5", L"VELL_MD5SUM"),
        listing_row(),
        copy_row(),
        append_row(),
        shell_row(),
    };
}

} // namespace vell::bench
