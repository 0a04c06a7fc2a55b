// Image metadata, against a native reader that bench/run has timed on the same photographs.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vell::bench {
namespace {

// What Wine takes to open a file, read its first bytes and close it.
void touch(const std::wstring& path) {
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    char bytes[4096];
    DWORD done = 0;
    ReadFile(file.get(), bytes, sizeof bytes, &done, nullptr);
}

// The four kinds of metadata of every photograph, in the two calls that this takes; one that lacks
// a kind answers with a code.
Row photographs_row() {
    const std::vector<std::wstring> paths = sample_files(L"photographs", L"*.j*");
    std::vector<std::unique_ptr<FunctionCall>> calls;
    for (const std::wstring& path : paths)
        for (const std::u16string_view switches : {u"GetExif GetGPS GetIPTC", u"GetXMP"})
            calls.push_back(std::make_unique<FunctionCall>(
                get_metadata,
                std::initializer_list<std::u16string_view>{switches, to_utf16(path)}));
    const Timing timing = compare(
        [&] {
            for (const auto& call : calls)
                call->dispatch();
        },
        [&] {
            for (const std::wstring& path : paths) {
                touch(path);
                touch(path);
            }
        });
    char note[120];
    std::snprintf(note, sizeof note,
                  "peer: exiv2 -PE, native, without its start; %.2f of bare opens and reads",
                  timing.ours_ns / timing.peer_ns);
    return {"VlFile_GetMetaData, Exif, GPS, IPTC and XMP of " + std::to_string(paths.size()) +
                " photographs",
            timing.ours_ns, native_ns(L"VELL_EXIV2"), 0.5, note};
}

// Everything in JSON, against a program that does the same, and against our own tagged text.
std::vector<Row> json_rows() {
    const std::vector<std::wstring> paths = sample_files(L"photographs", L"*.j*");
    std::vector<std::unique_ptr<FunctionCall>> as_json;
    std::vector<std::unique_ptr<FunctionCall>> as_text;
    const auto add = [&](std::vector<std::unique_ptr<FunctionCall>>& calls,
                         std::u16string_view switches) {
        for (const std::wstring& path : paths)
            calls.push_back(std::make_unique<FunctionCall>(
                get_metadata,
                std::initializer_list<std::u16string_view>{switches, to_utf16(path)}));
    };
    add(as_json, u"-GetAll -Format=JSON");
    add(as_text, u"-GetAll");
    const auto dispatch = [](const std::vector<std::unique_ptr<FunctionCall>>& calls) {
        return [&calls] {
            for (const auto& call : calls)
                call->dispatch();
        };
    };
    const Timing timing = compare(dispatch(as_json), dispatch(as_text));
    const std::string name =
        "VlFile_GetMetaData, all of " + std::to_string(paths.size()) + " photographs as JSON";
    std::vector<Row> rows{
        {name, timing.ours_ns, timing.peer_ns, 1.5, "peer: itself as tagged text"}};
    if (const double exiftool = native_ns(L"VELL_EXIFTOOL"); exiftool != 0)
        rows.push_back({name, timing.ours_ns, exiftool, 0.1,
                        "peer: exiftool -n -j -G1, native, without its start"});
    return rows;
}

Row large_file_row() {
    FunctionCall large(get_metadata, {u"GetExif", to_utf16(sample_path(L"large.jpg"))});
    FunctionCall small(get_metadata, {u"GetExif", to_utf16(sample_path(L"small.jpg"))});
    const Timing timing = compare([&] { large.run(); }, [&] { small.run(); });
    return {"VlFile_GetMetaData, Exif at the front of 2 GiB", timing.ours_ns, timing.peer_ns, 1.2,
            "peer: itself on the photograph alone"};
}

} // namespace

std::vector<Row> metadata_rows() {
    if (!has_sample_files() || native_ns(L"VELL_EXIV2") == 0)
        return {}; // no photographs, or started without bench/run
    std::vector<Row> rows{photographs_row(), large_file_row()};
    for (Row& row : json_rows())
        rows.push_back(std::move(row));
    return rows;
}

} // namespace vell::bench
