// Parts of files of every format: each that is begun is ended, in lines and in XML, and no part
// lies outside the file's own numbers.
#include "fuzz/input.h"
#include "src/formats/recognition.h"
#include "src/structure/parts.h"

#include <algorithm>
#include <string>

namespace vell::structure_fuzz {
namespace {

using formats::Format;

void report(Format format, ByteSource& source, structure::StructureReport& report) {
    const formats::Window file(source);
    const auto told = [&] {
        switch (format) {
        case Format::Jpeg:
            return structure::report_jpeg(file, report);
        case Format::Png:
            return structure::report_png(file, report);
        case Format::Gif:
            return structure::report_gif(file, report);
        case Format::Tiff:
            return structure::report_tiff(file, report);
        case Format::Riff:
            return structure::report_riff(file, report);
        default:
            return structure::report_boxes(file, report);
        }
    }();
    FUZZ_CHECK(told); // memory does not fail
}

std::string text_of(const params::ComposedText& text) {
    std::string all;
    for (const auto& piece : text.pieces())
        all += piece.bytes;
    return all;
}

} // namespace

FUZZ_TARGET(structure) {
    const std::string_view bytes = fuzz::as_text(data, size);
    const Format format = formats::format_of(bytes.substr(0, formats::recognizable_size));
    for (const bool as_xml : {false, true}) {
        BytesInMemory source(bytes);
        params::ComposedText text;
        structure::StructureReport lines({as_xml, true}, text);
        lines.start_file("file", size);
        report(format, source, lines);
        lines.finish_file();
        FUZZ_CHECK(lines.depth() == 0);
        if (!as_xml)
            continue;
        const std::string xml = text_of(text);
        FUZZ_CHECK(std::ranges::count(xml, '<') == std::ranges::count(xml, '>'));
        FUZZ_CHECK(xml.ends_with("/>") || xml.ends_with("</file>"));
    }
    return 0;
}

} // namespace vell::structure_fuzz
