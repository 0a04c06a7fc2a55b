// Image metadata, against a native reader that bench/run has timed on the same photographs.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/base/win32_text.h"

#include <windows.h>

#include <memory>
#include <string>

namespace vell::bench {
namespace {

constexpr std::int16_t get_metadata = 4260;

// What each photograph has of four kinds of metadata; one that lacks a kind answers with a code.
Row photographs_row() {
    std::vector<std::unique_ptr<FunctionCall>> calls;
    const std::wstring folder = sample_path(L"photographs\\");
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((folder + L"*.j*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::u16string path = to_utf16(folder + entry.cFileName);
            for (const std::u16string_view switches : {u"GetExif GetGPS", u"GetIPTC", u"GetXMP"})
                calls.push_back(std::make_unique<FunctionCall>(
                    get_metadata, std::initializer_list<std::u16string_view>{switches, path}));
        } while (FindNextFileW(search, &entry));
        FindClose(search);
    }
    const double ours = best_of(10, [&] {
        for (const auto& call : calls)
            call->dispatch();
    });
    return {"VlFile_GetMetaData, Exif, GPS, IPTC and XMP of " + std::to_string(calls.size() / 3) +
                " photographs",
            ours, native_ns(L"VELL_EXIV2"), 0.5, "peer: exiv2 -PE, native, without its start"};
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
    return {photographs_row(), large_file_row()};
}

} // namespace vell::bench
