#include "src/structure/file_structure.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"
#include "tests/portable/pdf_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"
#include "tests/portable/zip_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace vell::structure {
namespace {

using namespace vell::test;

// Lines are separated by "|".
std::string structure_of(std::string bytes, std::u16string switches = u"") {
    FakeSystem system;
    system.add(u"C:\\file", std::move(bytes));
    std::string answer = answer_of({std::move(switches), u"C:\\file"}, [&](params::Call& call) {
        return structure::get_file_structure(call, system);
    });
    std::ranges::replace(answer, '\r', '|');
    return answer;
}

void expect_lines(const std::string& told, std::initializer_list<std::string_view> lines) {
    for (const std::string_view line : lines)
        EXPECT_NE(told.find(line), told.npos) << line << " in " << told;
}

TEST(FileStructure, TellsBoxesWithTheirFields) {
    const std::string movie =
        file_type + box("free", "12") +
        box("moov", movie_header() + full_box("titl", "", 3) + box("udta", big32(0)));
    EXPECT_EQ(structure_of(movie),
              "QuickTime or ISO media: size 174"
              "|  ftyp: offset 0, size 24, brand isom, version 512, compatible isom avc1"
              "|  free: offset 24, size 10"
              "|  moov: offset 34, size 140"
              "|    mvhd: offset 42, size 108, time scale 600, duration 1200"
              "|    titl: offset 150, size 12, Moviebox version too high, skipped moviebox"
              "|    udta: offset 162, size 12|      (no box): offset 170, size 4");
}

TEST(FileStructure, TellsWhichItemsAFileHas) {
    const std::string image =
        box("ftyp", "heic" + big32(0) + "mif1") +
        full_box("meta",
                 full_box("pitm", big16(7)) +
                     full_box("iinf",
                              big16(1) + full_box("infe", big16(7) + big16(0) + "hvc1" + '\0', 2)) +
                     full_box("iref", box("cdsc", big16(8) + big16(1) + big16(7))) +
                     full_box("iref", box("cdsc", big32(70'000) + big16(1) + big32(7)), 1));
    expect_lines(structure_of(image),
                 {"pitm: offset 32, size 14, item 7", "size 21, item 7, type hvc1",
                  "cdsc: offset 93, size 14, from 8, to 7",
                  "cdsc: offset 119, size 18, from 70000, to 7"});
}

TEST(FileStructure, TellsImagesAndWhatIsInTheirParts) {
    const std::string tags = build_tiff(ByteOrder::Big, {.first = {ascii(315, "Ann Artist")},
                                                         .exif = {{37385, FieldType::Short, {1}}}});
    const std::string tiff = structure_of(tags);
    EXPECT_TRUE(tiff.starts_with("TIFF: size 67|  IFD: offset 8, size 30, entries 2"
                                 "|    315: offset 10, size 12, type ASCII, count 11, value at 38"
                                 "|    34665: offset 22, size 12, type LONG, count 1"
                                 "|      Exif: offset 49, size 18, entries 1"
                                 "|        37385: offset 51, size 12, type SHORT, count 1"))
        << tiff;

    const std::string frame = segment(SegmentMarker::Sof0, "\x08" + big16(20) + big16(30) + "\1");
    expect_lines(
        structure_of(jpeg({exif_segment(tags), photoshop(resource(1028, "caption")), frame})),
        {"|  APP1: offset 2, size 77, identifier Exif|    IFD: offset 20, size 30, entries 2",
         "|  APP13: offset 79, size 37, identifier Photoshop 3.0|    1028: offset 97, size 19, "
         "data size 7",
         "|  SOF0: offset 116, size 10, width 30, height 20, bits 8, components 1|  SOS: ",
         "|  (scan): offset 140, size 6"});

    EXPECT_EQ(structure_of(png({png_chunk("tEXt", std::string("Title\0x", 7))})),
              "PNG: size 64|  IHDR: offset 8, size 25, width 16843009, height 16843009, bits 1, "
              "colour type 1|  tEXt: offset 33, size 19, keyword Title"
              "|  IEND: offset 52, size 12");
    EXPECT_EQ(structure_of("GIF89a" + std::string("\2\0\3\0\0\0\0!\xF9\1x\0", 12) +
                           std::string(",\0\0\0\0\2\0\3\0\0\2\1y\0;", 15)),
              "GIF: size 33|  Header: offset 0, size 13, width 2, height 3"
              "|  Extension: offset 13, size 5, label 0xF9|  Image: offset 18, size 14"
              "|  Trailer: offset 32, size 1");
    EXPECT_EQ(structure_of("RIFF" + little32(4 + 8 + 3 + 1 + 8) + "WEBPVP8 " + little32(3) + "abc" +
                           '\0' + "EXIF" + little32(9)),
              "RIFF: size 32|  RIFF: offset 0, size 32, form WEBP|    VP8 : offset 12, size 11"
              "|    EXIF: offset 24, size 17, cut off");
}

TEST(FileStructure, TellsDocumentsAndArchives) {
    Pdf pdf;
    pdf.object(1, "<< /Title (x) >>").finish("/Size 2 /Info 1 0 R");
    expect_lines(structure_of(pdf.bytes),
                 {"PDF: size ", "|  header: offset 0, size 8, version 1.4",
                  ", information 1 0, information at ", "|  startxref: offset ", ", table at "});

    expect_lines(structure_of(zip_of({"a folder/", "a.txt"})),
                 {"zip: size ",
                  "|  folder: offset 0, size 0, path a folder/, method 0, expanded size 0",
                  ", path a.txt, method 0, expanded size 5", "|  central directory: offset ",
                  ", entries 2|  end of central directory: offset "});
}

TEST(FileStructure, GivesElementsAsXml) {
    const std::string movie = file_type + box("a<&\"", "x") + box("moov", movie_header());
    EXPECT_EQ(structure_of(movie, u"-Format=XML"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
              "|<file format=\"QuickTime or ISO media\" size=\"149\">"
              "|  <box name=\"ftyp\" offset=\"0\" size=\"24\" brand=\"isom\" version=\"512\" "
              "compatible=\"isom avc1\"/>"
              "|  <box name=\"a&lt;&amp;&quot;\" offset=\"24\" size=\"9\"/>"
              "|  <box name=\"moov\" offset=\"33\" size=\"116\">"
              "|    <box name=\"mvhd\" offset=\"41\" size=\"108\" time_scale=\"600\" "
              "duration=\"1200\"/>"
              "|  </box>|</file>");
}

TEST(FileStructure, RefusesOtherFilesAndEndsAtAnyDepth) {
    EXPECT_EQ(structure_of("just a text"), "$$-4243");
    EXPECT_EQ(structure_of(""), "$$-4243");
    EXPECT_EQ(structure_of("PK\3\4 but no archive"), "$$-4249");

    std::string nested = movie_header();
    for (int i = 0; i < 1000; ++i)
        nested = box("udta", nested);
    const std::string told = structure_of(file_type + box("moov", nested));
    EXPECT_EQ(told.find("mvhd"), told.npos);
    EXPECT_EQ(std::ranges::count(told, '|'), 32) << "the type of the file, and 31 levels";
}

struct Part {
    std::size_t depth;
    std::uint64_t begin;
    std::uint64_t end;
    bool is_cut_off = false;
};

// The lines of a structure that tell a place, without the first one.
std::vector<Part> parts_in(const std::string& structure) {
    std::vector<Part> parts;
    std::istringstream lines(structure);
    for (std::string line; std::getline(lines, line, '|');) {
        const std::size_t depth = line.find_first_not_of(' ') / 2;
        const std::size_t place = line.find(": offset ");
        unsigned long long begin = 0;
        unsigned long long size = 0;
        if (depth > 0 && place != line.npos &&
            std::sscanf(line.c_str() + place, ": offset %llu, size %llu", &begin, &size) == 2)
            parts.push_back({depth, begin, begin + size, line.find("cut off") != line.npos});
    }
    return parts;
}

std::size_t parts_in_xml(std::string_view structure) {
    constexpr std::string_view place = "\" offset=\"";
    std::size_t count = 0;
    for (std::size_t at = 0; (at = structure.find(place, at)) != structure.npos; ++at)
        ++count;
    return count;
}

// Boxes lie in boxes, one behind the other, or are told to be cut off. Directories of tags may lie
// anywhere.
TEST(FileStructure, OfRealFilesTellsPartsInTheirPlaces) {
    const auto files = real_files({"movie", "movie2", "jpeg", "jpeg2", "tiff", "tiff2", "png",
                                   "png2", "raw", "other", "pdf", "zip", "picture"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    std::size_t told = 0;
    for (const auto& path : files) {
        const std::string bytes = bytes_of(path);
        const std::string structure = structure_of(bytes);
        const std::string xml = structure_of(bytes, u"-Format=XML");
        ASSERT_EQ(structure.starts_with("$$"), xml.starts_with("$$")) << path;
        if (structure.starts_with("$$"))
            continue;
        const std::vector<Part> parts = parts_in(structure);
        told += parts.size();
        EXPECT_EQ(parts_in_xml(xml), parts.size()) << path;
        const bool has_boxes = structure.starts_with("QuickTime");
        std::vector<Part> around{{0, 0, bytes.size()}};
        for (const Part& part : parts) {
            std::uint64_t free_from = around.back().begin;
            for (; around.back().depth >= part.depth; around.pop_back())
                free_from = around.back().end;
            const Part above = around.back();
            EXPECT_LE(part.begin, bytes.size()) << path;
            if (has_boxes) {
                EXPECT_GE(part.begin, free_from) << path;
                EXPECT_EQ(part.end > above.end, part.is_cut_off) << path << " at " << part.begin;
            }
            around.push_back({part.depth, part.begin, std::min(part.end, above.end)});
        }
    }
    EXPECT_GT(told, 10'000U);
}

} // namespace
} // namespace vell::structure
