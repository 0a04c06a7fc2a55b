// Thumbnails, against vipsthumbnail, which bench/run has timed on the same files.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/base/number_text.h"
#include "src/windows/text.h"

#include <memory>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

constexpr std::int16_t create_thumbnail = 4284;

std::u16string switches_of(int size) {
    const std::string text = "-MaxSize=" + std::to_string(size);
    return std::u16string(text.begin(), text.end());
}

std::string memory_note(std::size_t before) {
    const std::size_t grown = peak_memory() - std::min(before, peak_memory());
    return "peer: vipsthumbnail, native, without its start; memory " + std::to_string(grown >> 20) +
           " MB";
}

Row picture_row(const wchar_t* name, const std::string& what, int size, double goal) {
    const std::u16string switches = switches_of(size);
    FunctionCall call(create_thumbnail, {switches, to_utf16(sample_path(name))});
    const std::size_t before = used_memory();
    const double ours = time_of([&] { call.run(); });
    const std::wstring variable =
        L"VELL_VIPS_" + std::wstring(name, name + 3) + L"_" + std::to_wstring(size);
    return {"VlFile_CreateThumbnail, " + what + " to " + std::to_string(size), ours,
            native_ns(variable.c_str()), goal, memory_note(before)};
}

Row thumbnails_row() {
    std::vector<std::wstring> paths = sample_files(L"photographs", L"*");
    const std::vector<std::wstring> more = sample_files(L"more_photographs", L"*");
    paths.insert(paths.end(), more.begin(), more.end());
    std::vector<std::unique_ptr<FunctionCall>> calls;
    for (const std::wstring& path : paths)
        calls.push_back(std::make_unique<FunctionCall>(
            create_thumbnail,
            std::initializer_list<std::u16string_view>{u"-MaxSize=256", to_utf16(path)}));
    const double ours = time_of([&] {
        for (const auto& call : calls)
            call->dispatch();
    });
    return {"VlFile_CreateThumbnail, " + std::to_string(paths.size()) + " photographs to 256", ours,
            native_ns(L"VELL_VIPS_ALL"), 0.6, "peer: vipsthumbnail, native, without its start"};
}

} // namespace

std::vector<Row> picture_rows() {
    if (!has_sample_files() || native_ns(L"VELL_VIPS_ALL") == 0)
        return {}; // no photographs, or started without bench/run
    std::vector<Row> rows;
    for (const int size : {80, 256, 1024})
        rows.push_back(picture_row(L"jpg.jpg", "a JPEG of 24 megapixels", size, 0.6));
    rows.push_back(picture_row(L"pro.jpg", "a progressive JPEG of 24 megapixels", 256, 0));
    rows.push_back(picture_row(L"png.png", "a PNG of 6 megapixels", 256, 0.8));
    rows.push_back(picture_row(L"big.png", "a PNG of 24 megapixels", 256, 0));
    rows.push_back(picture_row(L"lac.png", "an interlaced PNG of 24 megapixels", 1024, 0));
    rows.push_back(thumbnails_row());
    return rows;
}

} // namespace vell::bench
