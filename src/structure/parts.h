// The parts of files of each format, told to a report. What is damaged is told as far as it goes.
// The only faults are those of the source.
#pragma once

#include "src/archive/zip_reader.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/window.h"
#include "src/structure/structure_report.h"

namespace vell::structure {

using formats::Read;
using formats::Window;

// No format is followed deeper than this.
inline constexpr std::size_t deepest = 32;

// ISO/IEC 14496-12; QuickTime File Format.
Read<void> report_boxes(const Window& file, StructureReport& report);
// ITU-T T.81, up to the first scan; with the directories of Exif and the image resources inside.
Read<void> report_jpeg(const Window& file, StructureReport& report);
Read<void> report_png(const Window& file, StructureReport& report);
Read<void> report_gif(const Window& file, StructureReport& report);
// The directories of a block of tags and their entries, and those that these lead to.
Read<void> report_tiff(const Window& block, StructureReport& report);
// RIFF (Multimedia Programming Interface and Data Specifications 1.0), WebP among them.
Read<void> report_riff(const Window& file, StructureReport& report);
// What the description of a PDF file reads: its header, its trailers with their tables, and the
// information dictionary.
Result<void> report_pdf(files::BufferedReader& file, StructureReport& report);
// Entries in the order of the central directory.
void report_zip(const archive::ZipReader& archive, StructureReport& report);

} // namespace vell::structure
