// Archives, against zip and unzip (timed by bench/run on the same files).
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <cstdio>
#include <string>

namespace vell::bench {
namespace {

double size_of(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return static_cast<double>(std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow);
}

Row create_row() {
    const std::wstring archive = sample_path(L"ours.zip");
    FunctionCall call(4303, {u"", to_utf16(sample_path(L"mixed")), to_utf16(archive)});
    const std::size_t before = used_memory();
    const double ours = best_of(
        3, [&] { call.run(); }, [&] { DeleteFileW(archive.c_str()); });
    const auto working = static_cast<double>(peak_memory() - before) / (1024.0 * 1024.0);
    char note[120];
    std::snprintf(
        note, sizeof note,
        "peer: zip -9 -r, native; our archive has %.3f of its size; working memory %.1f MiB",
        size_of(archive) / size_of(sample_path(L"zip.zip")), working);
    return {"VlFile_CreateZip, 5,000 files of 200 MB", ours, native_ns(L"VELL_ZIP"), 1.0, note};
}

// Expands into a folder that is empty at first; the files of later rounds replace those before, as
// they do for the peer.
Row expand_row(const char* name, const wchar_t* archive, const wchar_t* native, double goal) {
    const std::wstring target = sample_path(L"expanded");
    CreateDirectoryW(target.c_str(), nullptr);
    FunctionCall call(4304, {u"-OverwriteExisting -DontCreateArchiveFolder",
                             to_utf16(sample_path(archive)), to_utf16(target)});
    const std::size_t before = used_memory();
    const double ours = best_of(3, [&] { call.run(); });
    const auto working = static_cast<double>(peak_memory() - before) / (1024.0 * 1024.0);
    char note[80];
    std::snprintf(note, sizeof note, "peer: unzip -o, native; working memory at most %.1f MiB",
                  working);
    return {name, ours, native_ns(native), goal, note};
}

Row list_row() {
    FunctionCall call(4305, {u"", to_utf16(sample_path(L"many.zip"))});
    constexpr double limit = 0.3e9;
    return {"VlFile_GetZipInfo, 65,535 entries", best_of(3, [&] { call.run(); }), limit, 1.0,
            "peer: 0.3 s"};
}

} // namespace

std::vector<Row> zip_rows() {
    if (!has_sample_files() || native_ns(L"VELL_ZIP") == 0)
        return {}; // started without bench/run
    return {create_row(),
            expand_row("VlFile_UnZip, 5,000 files of 200 MB", L"zip.zip", L"VELL_UNZIP", 1.5),
            expand_row("VlFile_UnZip, one file of 500 MB", L"one.zip", L"VELL_UNZIP_ONE", 1.0),
            list_row()};
}

} // namespace vell::bench
