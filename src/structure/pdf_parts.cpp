#include "src/base/number_text.h"
#include "src/documents/pdf_syntax.h"
#include "src/documents/pdf_tables.h"
#include "src/structure/parts.h"

#include <algorithm>
#include <string>

namespace vell::structure {
namespace {

using namespace documents;
using files::BufferedReader;

constexpr std::size_t npos = std::string_view::npos;

// The header (ISO 32000-1, 7.5.2) stands within the first 1024 bytes.
Result<void> report_header(BufferedReader& file, StructureReport& report) {
    constexpr std::size_t header_room = 1024;
    constexpr std::string_view mark = "%PDF-";
    constexpr std::size_t version_size = 3;
    file.seek(0);
    const std::string start = VELL_TRY(file.read_bytes(header_room));
    const std::size_t at = start.find(mark);
    if (at == npos)
        return {};
    const Part part(report, "object", "header", at, mark.size() + version_size);
    report.field("version", start.substr(at + mark.size(), version_size),
                 params::TextEncoding::AsciiMac);
    return {};
}

// Where the last table or cross-reference stream stands (7.5.5).
Result<void> report_start(BufferedReader& file, StructureReport& report) {
    constexpr std::string_view keyword = "startxref";
    const std::uint64_t from = file.size() - std::min<std::uint64_t>(file.size(), table_read);
    file.seek(from);
    const std::string end = VELL_TRY(file.read_bytes(table_read));
    const std::size_t at = end.rfind(keyword);
    if (at == npos)
        return {};
    const Part part(report, "object", keyword, from + at, end.size() - at);
    std::string_view rest = std::string_view(end).substr(at + keyword.size());
    if (const auto table = take_pdf_number(rest))
        report.field("table at", *table);
    return {};
}

std::string text_of(const ObjectId& object) {
    return to_text(object.number) + " " + to_text(object.generation);
}

class TrailerReport {
  public:
    TrailerReport(BufferedReader& file, StructureReport& report)
        : file_(file), report_(report), tables_(file) {}

    // Newest first, as the description reads them.
    void report_all() {
        constexpr int most_trailers = 1000;
        std::uint64_t end = file_.size();
        for (int i = 0; i < most_trailers; ++i) {
            const std::uint64_t behind = end;
            const Result<Trailer> trailer = find_trailer(file_, end);
            if (!trailer)
                return;
            report_one(*trailer, end, behind);
        }
    }

  private:
    void report_one(const Trailer& trailer, std::uint64_t start, std::uint64_t end) {
        report_.start("object", "trailer", start, end - start);
        report_.field("table at", trailer.table);
        if (trailer.previous_table)
            report_.field("previous table at", *trailer.previous_table);
        if (trailer.encrypted)
            report_.note("encrypted");
        if (trailer.information)
            report_information(trailer, *trailer.information);
        report_.finish();
    }

    void report_information(const Trailer& trailer, const ObjectId& object) {
        report_.field("information", text_of(object));
        tables_.begin(trailer);
        if (tables_.go_to_object(object))
            report_.field("information at", file_.position());
    }

    BufferedReader& file_;
    StructureReport& report_;
    TableChain tables_;
};

} // namespace

Result<void> report_pdf(BufferedReader& file, StructureReport& report) {
    VELL_TRY(report_header(file, report));
    TrailerReport(file, report).report_all();
    return report_start(file, report);
}

} // namespace vell::structure
