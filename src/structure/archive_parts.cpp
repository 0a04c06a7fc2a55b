#include "src/structure/parts.h"

namespace vell::structure {
namespace {

using archive::EntryInfo;

void report_entry(const EntryInfo& entry, StructureReport& report) {
    const bool is_utf8 = formats::zip::has(entry.flags, formats::zip::EntryFlag::Utf8);
    const formats::zip::EntryExtent extent = formats::zip::with_zip64(
        {entry.uncompressed_size, entry.compressed_size, entry.local_header_offset},
        entry.extra_field);
    const Part part(report, "entry", entry.is_folder ? "folder" : "file",
                    extent.local_header_offset, extent.compressed_size);
    report.field("path", entry.name,
                 is_utf8 ? params::TextEncoding::Utf8 : params::TextEncoding::AsciiDos);
    report.field("method", std::uint64_t{entry.method});
    report.field("expanded size", extent.uncompressed_size);
    if (report.verbose()) {
        report.field("flags", std::uint64_t{entry.flags});
        report.field("checksum", std::uint64_t{entry.crc32});
    }
}

} // namespace

void report_zip(const archive::ZipReader& archive, StructureReport& report) {
    for (std::uint32_t i = 0; i < archive.entry_count(); ++i)
        if (const auto entry = archive.entry(i))
            report_entry(*entry, report);
    const archive::ArchiveLayout& layout = archive.layout();
    {
        const Part part(report, "record", "central directory", layout.directory_offset,
                        layout.directory_size);
        report.field("entries", std::uint64_t{archive.entry_count()});
        if (layout.uses_zip64)
            report.note("Zip64");
    }
    const Part part(report, "record", "end of central directory", layout.end_record_offset,
                    formats::zip::EndOfCentralDirectory::size);
}

} // namespace vell::structure
