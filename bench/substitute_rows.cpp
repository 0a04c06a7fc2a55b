// VlFile_Substitute on 256 MiB of text, against a bare copy of the same file in the same process.
// What sed takes for the same change is to be measured outside, on the sample that is kept when
// VELL_BENCH_KEEP is set.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

constexpr std::size_t file_size = 256u * 1024 * 1024;
constexpr std::int16_t substitute_id = 4283;

UniqueFile open_file(const std::wstring& path, DWORD access, DWORD disposition) {
    UniqueFile file(CreateFileW(path.c_str(), access, 0, nullptr, disposition,
                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) {
        std::fprintf(stderr, "the sample cannot be opened: Windows error %lu\n", GetLastError());
        std::exit(2);
    }
    return file;
}

void write_all(const UniqueFile& file, const char* bytes, std::size_t count) {
    DWORD done = 0;
    if (!WriteFile(file.get(), bytes, static_cast<DWORD>(count), &done, nullptr)) {
        std::fprintf(stderr, "the sample cannot be written: Windows error %lu\n", GetLastError());
        std::exit(2);
    }
}

// "Reminder" stands there three times a kilobyte, in one case or the other.
void write_sample(const std::wstring& path) {
    std::string block;
    for (int line = 0; block.size() < 1024 * 1024; ++line) {
        block += "Invoice " + std::to_string(4711 + line * 7919 % 5000) +
                 " for Mueller & Soen, paid in full on 2020-12-31; the quick brown fox jumps. ";
        block += line % 4 != 0 ? "Nothing remains to be paid.\n"
                 : line % 8    ? "Reminder sent.\n"
                               : "reminder sent.\n";
    }
    block.resize(1024 * 1024 - 1);
    block += '\n';
    const UniqueFile file = open_file(path, GENERIC_WRITE, CREATE_ALWAYS);
    for (std::size_t written = 0; written < file_size; written += block.size())
        write_all(file, block.data(), block.size());
}

void copy_bare(const std::wstring& from, const std::wstring& to) {
    const UniqueFile source = open_file(from, GENERIC_READ, OPEN_EXISTING);
    const UniqueFile target = open_file(to, GENERIC_WRITE, CREATE_ALWAYS);
    std::vector<char> buffer(64'000);
    DWORD done = 0;
    while (
        ReadFile(source.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &done, nullptr) &&
        done > 0)
        write_all(target, buffer.data(), done);
}

} // namespace

std::vector<Row> substitute_rows() {
    wchar_t folder[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, folder);
    const std::wstring source = std::wstring(folder) + L"vell_bench_substitute.txt";
    const std::wstring target = source + L".new";
    write_sample(source);

    const struct {
        const char* work;
        const char16_t* switches;
        const char16_t* search;
    } cases[] = {
        {"VlFile_Substitute, 256 MiB, a few hits a kilobyte", u"", u"Reminder"},
        {"VlFile_Substitute, 256 MiB, no hit", u"", u"Remainder of"},
        {"VlFile_Substitute, 256 MiB, ignoring case", u"IgnoreCase", u"Reminder"},
    };
    std::vector<Row> rows;
    for (const auto& c : cases) {
        DeleteFileW(target.c_str());
        FunctionCall call(substitute_id,
                          {c.switches, to_utf16(source), to_utf16(target), c.search, u"Note"});
        const std::size_t before = peak_memory();
        call.run();
        const std::size_t ours_peak = peak_memory() - before;
        const Timing timing = compare(
            [&] {
                DeleteFileW(target.c_str());
                call.run();
            },
            [&] {
                DeleteFileW(target.c_str());
                copy_bare(source, target);
            },
            3);
        char note[120];
        std::snprintf(note, sizeof note, "peer: a bare copy; peak memory %.1f MiB",
                      static_cast<double>(ours_peak) / (1024.0 * 1024.0));
        rows.push_back({c.work, timing.ours_ns, timing.peer_ns, 0, note});
    }
    DeleteFileW(target.c_str());
    if (!std::getenv("VELL_BENCH_KEEP"))
        DeleteFileW(source.c_str());
    return rows;
}

} // namespace vell::bench
