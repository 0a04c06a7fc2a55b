// The functions on files, against native tools (timed by bench/run on the same files) and against
// the bare Windows calls in this process.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/handle.h"
#include "src/windows/system.h"
#include "src/windows/text.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

// The file through the system's hash, with nothing around it.
void hash_bare(const std::wstring& path, files::DigestAlgorithm algorithm) {
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    const auto digest = windows::system().new_digest(algorithm);
    std::vector<char> buffer(64 * 1024);
    DWORD done = 0;
    while (ReadFile(file.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &done, nullptr) &&
           done > 0)
        static_cast<void>((*digest)->add({buffer.data(), done}));
    static_cast<void>((*digest)->finish());
}

Row hash_row(const char* name, std::u16string_view switches, const wchar_t* native,
             files::DigestAlgorithm algorithm) {
    const std::wstring path = sample_path(L"text.txt");
    FunctionCall call(4301, {switches, to_utf16(path)});
    const Timing timing = compare([&] { call.run(); }, [&] { hash_bare(path, algorithm); });
    char note[80];
    std::snprintf(note, sizeof note, "peer: the native tool; %.2f of the system's hash alone",
                  timing.ours_ns / timing.peer_ns);
    return {name, timing.ours_ns, native_ns(native), 1.0, note};
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

Timing time_listing(const std::wstring& folder) {
    FunctionCall call(4254, {u"files folders -recursive", to_utf16(folder)});
    return between_peers([&] { call.run(); }, [&] { bare_walk(folder); });
}

std::vector<Row> listing_rows() {
    const Timing tenth = time_listing(sample_path(L"tree\\"));
    const Timing whole = time_listing(sample_path(L"forest\\"));
    return {{"VlFile_ListFolder, 100,000 files in 100 folders", tenth.ours_ns, tenth.peer_ns, 1.05,
             "peer: a bare find-first/find-next walk"},
            {"VlFile_ListFolder, 1,000,000 files in 1,000 folders", whole.ours_ns, whole.peer_ns,
             1.05, "the same"},
            {"VlFile_ListFolder, ten times the entries", whole.ours_ns, tenth.ours_ns, 11.0,
             "peer: itself on a tenth; the bare walk: " +
                 std::to_string(whole.peer_ns / tenth.peer_ns).substr(0, 5)}};
}

Row search_row(const wchar_t* name, const char* work) {
    const std::wstring folder = sample_path(name);
    FunctionCall call(4270, {u"-files", to_utf16(folder), u"file0*5.txt"});
    const Timing timing = between_peers([&] { call.run(); }, [&] { bare_walk(folder); });
    return {work, timing.ours_ns, timing.peer_ns, 1.05, "peer: a bare find-first/find-next walk"};
}

Row copy_row() {
    const std::wstring source = sample_path(L"gigabyte.bin");
    const std::wstring target = sample_path(L"copied.bin");
    FunctionCall call(4210, {u"", to_utf16(source), to_utf16(target)});
    const auto reset = [&] {
        DeleteFileW(target.c_str());
    };
    const auto peer = [&] {
        CopyFileW(source.c_str(), target.c_str(), TRUE);
    };
    peer(); // the first one makes room for itself in the system's cache
    const Timing timing = between_peers([&] { call.run(); }, peer, reset);
    reset();
    return {"VlFile_CopyFile, 1 GiB", timing.ours_ns, timing.peer_ns, 1.1, "peer: CopyFileW"};
}

Row append_row() {
    const std::wstring target = sample_path(L"appended.txt");
    DeleteFileW(target.c_str());
    UniqueFile(CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    const std::u16string text(100, u'x');
    FunctionCall call(4308, {u"-Encoding=UTF8", to_utf16(target), text});
    const auto thousand = [&] {
        for (int i = 0; i < 1000; ++i)
            call.run();
    };
    const double first = time_of(thousand);
    for (int i = 0; i < 4; ++i)
        thousand();
    const double last = time_of(thousand);
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

std::wstring own_program_path() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path;
}

std::wstring own_program() {
    return L"\"" + own_program_path() + L"\"";
}

std::vector<Row> shell_rows() {
    const auto time = [](const wchar_t* bytes) {
        const std::wstring command = own_program() + L" --print " + bytes;
        FunctionCall call(4295, {u"-TimeoutSecs=600", to_utf16(command)});
        return Timing{time_of([&] { call.run(); }),
                      time_of([&] { bare_pipe(L"cmd /c " + command); })};
    };
    const auto tenth = time(L"3000000");
    const auto whole = time(L"30000000");
    return {{"VlFile_ExecuteShell, 30 MB of output", whole.ours_ns, whole.peer_ns, 2.0,
             "peer: the same command into a pipe that is only read"},
            {"VlFile_ExecuteShell, ten times the output", whole.ours_ns, tenth.ours_ns, 11.0,
             "peer: itself on a tenth"}};
}

// Many icons are asked for in a list of files, so that one must not take long.
Row icon_row() {
    constexpr double most_ns = 5e6;
    FunctionCall call(4307, {u"-MaxSize=32", to_utf16(own_program_path())});
    return {"VlFile_GetIcon", time_of([&] { call.run(); }), most_ns, 1.0, "peer: 5 ms"};
}

} // namespace

std::vector<Row> file_rows() {
    if (!has_sample_files())
        return {};
    std::vector<Row> rows{
        hash_row("VlFile_GetFileHash, SHA-1, 128 MiB", u"-SHA1", L"VELL_SHA1SUM",
                 files::DigestAlgorithm::Sha1),
        hash_row("VlFile_GetFileHash, MD5, 128 MiB", u"-MD5", L"VELL_MD5SUM",
                 files::DigestAlgorithm::Md5),
        copy_row(),
        append_row(),
        search_row(L"tree\\", "VlFile_Search, 100,000 files in 100 folders"),
        search_row(L"forest\\", "VlFile_Search, 1,000,000 files in 1,000 folders"),
        icon_row()};
    for (auto more : {listing_rows, shell_rows})
        for (Row& row : more())
            rows.push_back(std::move(row));
    return rows;
}

} // namespace vell::bench
