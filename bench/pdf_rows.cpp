// Descriptions and texts of PDF files, against native readers that bench/run has timed on the same
// files.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/text.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

constexpr std::int16_t get_as_plain_text = 4327;

Row text_row() {
    FunctionCall call(get_as_plain_text, {u"", to_utf16(sample_path(L"pages.pdf"))});
    const double ours = time_of([&] { call.run(); });
    return {"VlFile_GetAsPlainText, 100 pages", ours, native_ns(L"VELL_PDFTOTEXT"), 1.1,
            "peer: pdftotext, native, without its start"};
}

} // namespace

std::vector<Row> pdf_rows() {
    if (!has_sample_files() || native_ns(L"VELL_PDFINFO") == 0)
        return {}; // no files, or started without bench/run
    std::vector<std::unique_ptr<FunctionCall>> calls;
    for (const std::wstring& path : sample_files(L"documents", L"*.pdf"))
        calls.push_back(std::make_unique<FunctionCall>(
            get_metadata,
            std::initializer_list<std::u16string_view>{u"-GetPDFDescription", to_utf16(path)}));
    const auto describe_all = [&] {
        for (const auto& call : calls)
            call->run();
    };
    describe_all();
    const std::size_t before = peak_memory();
    const double ours = time_of(describe_all);
    char note[120];
    std::snprintf(note, sizeof note,
                  "peer: pdfinfo, native, without its start; %zu KB of memory beyond a first round",
                  (peak_memory() - before) / 1024);
    std::vector<Row> rows{
        {"VlFile_GetMetaData, description of " + std::to_string(calls.size()) + " PDF files", ours,
         native_ns(L"VELL_PDFINFO"), 0.3, note}};
    if (native_ns(L"VELL_PDFTOTEXT") != 0)
        rows.push_back(text_row());
    return rows;
}

} // namespace vell::bench
