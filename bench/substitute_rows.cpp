// VlFile_Substitute on 128 MiB of text, against sed making the same change natively, and against a
// bare copy of the same file in this process, which is what Wine's file calls alone cost.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/handle.h"
#include "src/windows/text.h"

#include <cstdio>
#include <vector>

namespace vell::bench {
namespace {

constexpr std::u16string_view without_hit = u"Zebra crossing";

void copy_bare(const std::wstring& from, const std::wstring& to) {
    const UniqueFile source(CreateFileW(from.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    const UniqueFile target(CreateFileW(to.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    std::vector<char> buffer(256 * 1024);
    DWORD done = 0;
    while (
        ReadFile(source.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &done, nullptr) &&
        done > 0)
        WriteFile(target.get(), buffer.data(), done, &done, nullptr);
}

} // namespace

std::vector<Row> substitute_rows() {
    if (!has_sample_files())
        return {};
    const std::wstring source = sample_path(L"text.txt");
    const std::wstring target = sample_path(L"substituted.txt");
    const auto reset = [&] {
        DeleteFileW(target.c_str());
    };
    const double copied = time_of([&] { copy_bare(source, target); }, reset);
    const struct {
        const char* work;
        const char16_t* switches;
        std::u16string_view search;
        const wchar_t* native;
        double goal;
    } cases[] = {
        {"VlFile_Substitute, 128 MiB, a few hits a kilobyte", u"", u"Invoice", L"VELL_SED_HITS",
         0.7},
        {"VlFile_Substitute, 128 MiB, no hit", u"", without_hit, L"VELL_SED_NONE", 0.7},
        {"VlFile_Substitute, 128 MiB, ignoring case", u"IgnoreCase", u"iNVOICE", L"VELL_SED_CASE",
         0.3},
    };
    std::vector<Row> rows;
    for (const auto& c : cases) {
        FunctionCall call(4283,
                          {c.switches, to_utf16(source), to_utf16(target), c.search, u"Rechnung"});
        reset();
        const std::size_t before = used_memory();
        call.run();
        const std::size_t working = peak_memory() - before;
        const double ours = time_of([&] { call.run(); }, reset);
        char note[120];
        std::snprintf(note, sizeof note,
                      "peer: sed; %.2f of a bare copy in this process; working memory %.2f MiB",
                      ours / copied, static_cast<double>(working) / (1024.0 * 1024.0));
        rows.push_back({c.work, ours, native_ns(c.native), c.goal, note});
        if (c.search == without_hit)
            rows.push_back({c.work, ours, copied, 1.6, "peer: a bare copy in this process"});
    }
    FunctionCall in_place(4283, {u"", to_utf16(target), u"", u"Invoice", u"Rechnung"});
    const double replaced =
        time_of([&] { in_place.run(); }, [&] { CopyFileW(source.c_str(), target.c_str(), FALSE); });
    rows.push_back({"VlFile_Substitute, 128 MiB, in place", replaced, copied, 2.0,
                    "peer: a bare copy in this process"});
    reset();
    return rows;
}

} // namespace vell::bench
