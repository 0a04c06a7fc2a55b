// Archives, against zip and unzip (timed by bench/run on the same files).
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

double size_of(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return static_cast<double>(std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow);
}

// An archive of a tree, against those that two other programs have made of it, and their times.
std::vector<Row> create_rows(const char* name, const wchar_t* tree, const std::wstring& variable) {
    const std::wstring archive = sample_path(L"ours.zip");
    FunctionCall call(4303, {u"", to_utf16(sample_path(tree)), to_utf16(archive)});
    const std::size_t before = used_memory();
    const double ours = time_of([&] { call.run(); }, [&] { DeleteFileW(archive.c_str()); });
    const auto working = static_cast<double>(peak_memory() - before) / (1024.0 * 1024.0);
    const double size = size_of(archive);
    const auto row = [&](const char* peer, const wchar_t* end, double goal, const wchar_t* ending) {
        char note[160];
        std::snprintf(note, sizeof note,
                      "peer: %s, native; our archive has %.3f of its size; working memory %.1f MiB",
                      peer, size / size_of(sample_path(tree) + ending), working);
        return Row{std::string("VlFile_CreateZip, ") + name, ours,
                   native_ns((variable + end).c_str()), goal, note};
    };
    return {row("zip -9 -r", L"_ZIP", 0.5, L".zip.zip"),
            row("7z a -mx5 -mmt1", L"_7Z", 0.6, L".7z.zip")};
}

std::unique_ptr<FunctionCall> expansion(const wchar_t* archive, const std::wstring& target) {
    return std::unique_ptr<FunctionCall>(
        new FunctionCall(4304, {u"-OverwriteExisting -DontCreateArchiveFolder",
                                to_utf16(sample_path(archive)), to_utf16(target)}));
}

// The system's part of an expansion: what it takes to make files of the same sizes.
void make_bare(const std::wstring& folder, std::span<const std::uint64_t> sizes) {
    static const std::string piece(1 << 20, 'x');
    const FILETIME time{0, 0x01D0'0000};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::wstring path = folder + L"\\" + std::to_wstring(i + 1);
        const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        for (std::uint64_t left = sizes[i]; left > 0;) {
            const auto count = static_cast<DWORD>(std::min<std::uint64_t>(left, piece.size()));
            DWORD written = 0;
            if (!WriteFile(file.get(), piece.data(), count, &written, nullptr))
                return;
            left -= written;
        }
        SetFileTime(file.get(), nullptr, &time, &time);
    }
}

double bare_time(std::span<const std::uint64_t> sizes) {
    std::wstring folder;
    return time_of([&] { make_bare(folder, sizes); }, [&] { folder = fresh_folder(); });
}

// An emptied folder is for few large files: many that were deleted just now make new ones slow.
enum class Into { NewFolder, EmptiedFolder, EarlierFiles };

Row expand_row(const char* name, const wchar_t* archive, Into into, const wchar_t* native,
               double goal) {
    std::wstring target = fresh_folder();
    std::unique_ptr<FunctionCall> call;
    const auto reset = [&] {
        if (into == Into::NewFolder)
            target = fresh_folder();
        if (into == Into::EmptiedFolder)
            for (const std::wstring& path : files_of(target))
                DeleteFileW(path.c_str());
        call = expansion(archive, target);
    };
    reset();
    if (into == Into::EarlierFiles)
        call->run();
    const std::size_t before = used_memory();
    const double ours = time_of([&] { call->run(); }, reset);
    const auto working = static_cast<double>(peak_memory() - before) / (1024.0 * 1024.0);
    std::vector<std::uint64_t> sizes;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(target))
        if (entry.is_regular_file())
            sizes.push_back(entry.file_size());
    char note[120];
    std::snprintf(note, sizeof note,
                  "peer: unzip, native; working memory at most %.1f MiB; bare calls take %.0f ms",
                  working, bare_time(sizes) / 1e6);
    return {name, ours, native_ns(native), goal, note};
}

// Entries of one folder. Wine looks through all of it for each new name, by another letter case, so
// that ten times the files take much more than ten times as long; not so the expansion itself.
Row crowded_row(const char* work, const wchar_t* archive, std::size_t count) {
    std::unique_ptr<FunctionCall> call;
    const double ours =
        time_of([&] { call->run(); }, [&] { call = expansion(archive, fresh_folder()); });
    const std::vector<std::uint64_t> empty_files(count);
    return {work, ours, bare_time(empty_files), 1.2, "peer: the same files made by bare calls"};
}

Row list_row() {
    FunctionCall call(4305, {u"", to_utf16(sample_path(L"many.zip"))});
    constexpr double limit = 0.3e9;
    return {"VlFile_GetZipInfo, 65,535 entries", time_of([&] { call.run(); }), limit, 1.0,
            "peer: 0.3 s"};
}

} // namespace

std::vector<Row> zip_rows() {
    if (!has_sample_files() || native_ns(L"VELL_MIXED_ZIP") == 0)
        return {}; // started without bench/run
    std::vector<Row> rows;
    const struct {
        const char* name;
        const wchar_t* tree;
        const wchar_t* variable;
    } trees[] = {{"625 mixed files of 25 MB", L"mixed", L"VELL_MIXED"},
                 {"1,500 texts of 25 MB", L"texts", L"VELL_TEXTS"},
                 {"3 files of 45 MB", L"large", L"VELL_LARGE"},
                 {"photographs of 15 MB", L"pictures", L"VELL_PICTURES"}};
    for (const auto& tree : trees)
        for (Row& row : create_rows(tree.name, tree.tree, tree.variable))
            rows.push_back(std::move(row));
    rows.push_back(expand_row("VlFile_UnZip, 625 mixed files of 25 MB", L"mixed.zip.zip",
                              Into::NewFolder, L"VELL_UNZIP", 0.85));
    rows.push_back(expand_row("VlFile_UnZip, 625 mixed files over those of an earlier run",
                              L"mixed.zip.zip", Into::EarlierFiles, L"VELL_UNZIP_OVER", 0));
    rows.push_back(expand_row("VlFile_UnZip, one file of 500 MB", L"one.zip", Into::EmptiedFolder,
                              L"VELL_UNZIP_ONE", 0.4));
    rows.push_back(
        crowded_row("VlFile_UnZip, 1,000 entries in one folder", L"thousand.zip", 1'000));
    rows.push_back(crowded_row("VlFile_UnZip, 4,000 entries in one folder", L"four.zip", 4'000));
    rows.push_back(list_row());
    return rows;
}

} // namespace vell::bench
