#include "src/structure/file_structure.h"

#include "src/formats/recognition.h"
#include "src/system/system.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vell::structure {
namespace {

using files::BufferedReader;
using formats::Format;
using params::Call;
using params::ComposedText;

constexpr std::string_view iso_media_name = "QuickTime or ISO media";

struct WindowFormat {
    Format format;
    std::string_view name;
    Read<void> (*report)(const Window& file, StructureReport& report);
};
constexpr std::array window_formats{
    WindowFormat{Format::IsoMedia, iso_media_name, report_boxes},
    WindowFormat{Format::Jpeg, "JPEG", report_jpeg},
    WindowFormat{Format::Png, "PNG", report_png},
    WindowFormat{Format::Gif, "GIF", report_gif},
    WindowFormat{Format::Tiff, "TIFF", report_tiff},
    WindowFormat{Format::Riff, "RIFF", report_riff},
};

Result<void> coded(const Read<void>& read) {
    return read ? Result<void>() : Result<void>(Failure{read.error().of_source});
}

Result<void> append_archive(std::unique_ptr<files::File> file, StructureReport& report) {
    const std::uint64_t size = VELL_TRY(file->size());
    const archive::ZipReader reader = VELL_TRY(archive::ZipReader::open(std::move(file)));
    report.start_file("zip", size);
    report_zip(reader, report);
    report.finish_file();
    return {};
}

Result<Format> format_of(BufferedReader& file) {
    file.seek(0);
    return formats::format_of(VELL_TRY(file.read_bytes(formats::recognizable_size)));
}

} // namespace

Result<void> append_boxes(ByteSource& file, ReportStyle style, ComposedText& text) {
    std::array<char, formats::recognizable_size> first_bytes{};
    const std::size_t count = VELL_TRY(file.read_at(0, first_bytes));
    if (formats::format_of({first_bytes.data(), count}) != Format::IsoMedia)
        return Failure{ErrorCode::NotAMovie};
    StructureReport report(style, text);
    report.start_file(iso_media_name, file.size());
    VELL_TRY(coded(report_boxes(Window(file), report)));
    report.finish_file();
    return {};
}

Result<void> get_file_structure(Call& call, System& system) {
    const params::SwitchSet switches = call.switches();
    const ReportStyle style{switches.has("-Format=XML"), switches.has("-Verbose")};
    const files::NativePath path = VELL_TRY(call.path(1));
    auto file = VELL_TRY(system.files().open(path, files::Permission::Read));
    BufferedReader reader = VELL_TRY(BufferedReader::over(*file));
    const Format format = VELL_TRY(format_of(reader));

    ComposedText text;
    StructureReport report(style, text);
    const auto* const found = std::ranges::find(window_formats, format, &WindowFormat::format);
    if (format == Format::Zip) {
        VELL_TRY(append_archive(std::move(file), report));
    } else if (format == Format::Pdf) {
        report.start_file("PDF", reader.size());
        VELL_TRY(report_pdf(reader, report));
        report.finish_file();
    } else if (found != window_formats.end()) {
        report.start_file(found->name, reader.size());
        VELL_TRY(coded(found->report(Window(reader), report)));
        report.finish_file();
    } else {
        return Failure{ErrorCode::NotSupported};
    }
    if (text.size() > ComposedText::max_size)
        return Failure{ErrorCode::ResourceTooLarge};
    text.drop_leading_line_end();
    call.set_decoded_text(text.encoded(), params::LineEndings::Keep);
    return {};
}

} // namespace vell::structure
