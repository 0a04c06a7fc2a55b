// VlFile_GetContents against one read and one host conversion of the same bytes.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace vell::bench {
namespace {

using host::host_call;

constexpr std::size_t file_size = 256u * 1024 * 1024;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s: Windows error %lu\n", what, GetLastError());
    std::exit(2);
}

// UTF-8 text of several scripts, cut to the file's size at a character.
void write_sample(const std::wstring& path) {
    std::string block;
    while (block.size() < 1024 * 1024)
        block += "Invoice 4711 for M\xC3\xBCller & S\xC3\xB8n, paid in full on 2020-12-31. "
                 "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80 The quick brown fox jumps over it.\r\n";
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    for (std::size_t written = 0; written < file_size;) {
        const std::size_t rest = file_size - written;
        std::string piece = rest < block.size() ? std::string(rest, 'x') : block;
        DWORD done = 0;
        if (!WriteFile(file.get(), piece.data(), static_cast<DWORD>(piece.size()), &done, nullptr))
            fail("the sample cannot be read or written");
        written += done;
    }
}

void read_and_convert(const std::wstring& path) {
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    const std::unique_ptr<char[]> buffer(new char[file_size]);
    DWORD done = 0;
    if (!ReadFile(file.get(), buffer.get(), file_size, &done, nullptr) || done != file_size)
        fail("the sample cannot be read or written");
    fm::Status status;
    fm::Text* text = FM_Text_Constructor1(&status);
    FM_Text_AssignWithLength(text, buffer.get(), done, 1, &status);
    FM_Text_Delete(text, &status);
}

} // namespace

std::vector<Row> contents_rows() {
    wchar_t folder[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, folder);
    const std::wstring path = std::wstring(folder) + L"vell_bench_contents.txt";
    write_sample(path);

    FunctionCall call(4223, {u"-Encoding=UTF8", to_utf16(path)});
    const std::size_t before = peak_memory();
    call.run();
    const std::size_t ours_peak = peak_memory() - before;
    const std::uint32_t units = host_call(FM_Text_GetSize, host::text_of(call.result()));
    const auto clear = [&] {
        host_call(FM_Data_Clear, call.result(), std::int32_t{1});
    };
    clear();
    const auto ours = [&] {
        call.run();
        clear();
    };
    const Timing timing = compare(ours, [&] { read_and_convert(path); });
    DeleteFileW(path.c_str());

    const double mib = 1024.0 * 1024.0;
    char note[160];
    std::snprintf(note, sizeof note, "peak memory %.0f MiB; bytes and text are %.0f MiB",
                  static_cast<double>(ours_peak) / mib,
                  (static_cast<double>(file_size) + 2.0 * units) / mib);
    return {{"VlFile_GetContents, 256 MiB of UTF-8", timing.ours_ns, timing.peer_ns, 1.1, note}};
}

} // namespace vell::bench
