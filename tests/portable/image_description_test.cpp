// Descriptions of images from headers that are made here.
#include "tests/portable/camera_builder.h"
#include "tests/portable/container_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::test;
using enum FieldType;

std::string description(const std::string& bytes) {
    return metadata_of("-GetImageDescription", bytes);
}

struct Lines {
    std::string height, width, depth, codec, horizontal = "72", vertical = "72", images = "1";
};
void expect_lines(const std::string& file, const Lines& lines) {
    EXPECT_EQ(description(file),
              "Height: " + lines.height + "|Width: " + lines.width + "|Depth: " + lines.depth +
                  "|Horizontal Res: " + lines.horizontal + "|Vertical Res: " + lines.vertical +
                  "|Codec name: " + lines.codec + "|Image count: " + lines.images +
                  "|Data size: " + std::to_string(file.size()));
}

const std::string tiff_codec = "TIFF|Codec type: tiff";
const std::string png_signature = "\x89PNG\r\n\x1A\n";

TEST(ImageDescription, Jpeg) {
    const auto jfif = [](char unit, std::uint16_t horizontal, std::uint16_t vertical) {
        return segment(SegmentMarker::App0,
                       "JFIF\0\1\2"s + unit + big16(horizontal) + big16(vertical) + "\0\0"s);
    };
    const std::string frame =
        segment(SegmentMarker::Sof2, "\x08"s + big16(480) + big16(640) + "\x03 components"s);
    const std::string inch = jfif(1, 300, 150);
    const std::string aspect = jfif(0, 1, 1);
    const std::string exif = exif_segment(
        tags_of({rationals(282, {1001, 10}), rationals(283, {99, 1})}, ByteOrder::Big));
    const auto expect = [&](const std::string& segments, const char* horizontal,
                            const char* vertical) {
        expect_lines("\xFF\xD8"s + segments + frame + "\xFF\xDA"s,
                     {"480", "640", "24", "Photo - JPEG|Codec type: jpeg", horizontal, vertical});
    };
    expect("", "72", "72");
    expect(inch, "300", "150");
    expect(jfif(2, 100, 0), "254", "72");
    expect(aspect + segment(SegmentMarker::Com, "comment") + "\xFF"s + exif, "100.1", "99");
    expect(exif + inch, "300", "150");
    EXPECT_EQ(description("\xFF\xD8"s + inch + "\xFF\xDA"s), "!-4247");
    EXPECT_EQ(description("\xFF\xD8\xFF\xE0\0\1"s), "!-92");
    EXPECT_EQ(description("\xFF\xD8"s + frame.substr(0, 9)), "!-302");
}

TEST(ImageDescription, Png) {
    const std::string codec = "PNG|Codec type: png ";
    const auto header = [](char depth, char colour) {
        return png_chunk("IHDR", big32(70'000) + big32(20) + depth + colour + "\0\0\0"s);
    };
    const auto density = [](std::uint32_t horizontal, std::uint32_t vertical, char unit) {
        return png_chunk("pHYs", big32(horizontal) + big32(vertical) + unit);
    };
    const struct {
        char depth, colour;
        const char* bits;
    } cases[] = {{1, 0, "1"}, {8, 2, "24"}, {4, 3, "4"}, {16, 4, "32"}, {16, 6, "64"}};
    for (const auto& [depth, colour, bits] : cases)
        expect_lines(png_signature + header(depth, colour) + density(2, 1, 0), // an aspect ratio
                     {"20", "70000", bits, codec});
    expect_lines(png_signature + png_chunk("CgBI", "1234") + header(8, 2) +
                     png_chunk("acTL", big32(7) + big32(0)) + density(2835, 11'811, 1) +
                     png_chunk("IDAT", "") + density(1, 1, 1),
                 {"20", "70000", "24", codec, "72.009", "299.999", "7"});
    EXPECT_EQ(description(png_signature + png_chunk("tEXt", "a") + header(8, 2)), "!-4247");
    EXPECT_EQ(description(png_signature + header(8, 2).substr(0, 15)), "!-302");
}

TEST(ImageDescription, Gif) {
    const std::string screen = "GIF89a\x40\1\xF0\0\x91\0\0"s + std::string(12, 'p');
    const std::string extension = "\x21\xF9\4data\0"s;
    const std::string image = "\x2C\0\0\0\0\x40\1\xF0\0\x80"s + "pppppp\2\3abc\1d\0"s;
    const Lines lines{"240", "320", "2", "GIF|Codec type: gif ", "72", "72", "2"};
    expect_lines(screen + extension + image + extension + image + "\x3B" + image, lines);
    expect_lines(screen + image + image.substr(0, 20), lines);
    EXPECT_EQ(description(screen.substr(0, 10)), "!-302");
}

TEST(ImageDescription, Bmp) {
    const std::string codec = "BMP|Codec type: WRLE";
    const std::string file_header = "BM" + std::string(12, '\0');
    const std::string info = little32(0xFFFF'FF00) + "\1\0\x18\0"s + little32(0) + little32(0);
    expect_lines(file_header + little32(40) + little32(320) + info + little32(11'811) + little32(0),
                 {"256", "320", "24", codec, "299.999"});
    expect_lines(file_header + little32(12) + "\x40\1\xF0\0\1\0\4\0"s, {"240", "320", "4", codec});
    EXPECT_EQ(description(file_header + little32(13) + std::string(40, '\0')), "!-4247");
    EXPECT_EQ(description(file_header + little32(40) + "short"), "!-302");
}

TEST(ImageDescription, Tiff) {
    std::string file = tags_of({longs(256, {70'000}),
                                shorts(257, {480}),
                                shorts(258, {8, 8, 8}),
                                shorts(277, {3}),
                                rationals(282, {524'288, 10'000}),
                                {283, Rational, {}, "", 1, ~0u},
                                shorts(296, {3})},
                               ByteOrder::Big);
    file.replace(10 + 7 * 12, 4, big32(static_cast<std::uint32_t>(file.size())));
    file += big16(0) + big32(8); // a second directory, which leads back to the first
    expect_lines(file, {"480", "70000", "24", tiff_codec, "133.169", "72", "2"});
    expect_lines(tags_of({shorts(256, {5}), shorts(257, {6})})
                     .substr(0, 34), // without the offset of the next one
                 {"6", "5", "1", tiff_codec});
    EXPECT_EQ(description(tags_of({shorts(256, {9})}, ByteOrder::Big)), "!-4249");
    for (const std::uint32_t first : {4u, 400u})
        EXPECT_EQ(description(std::string(file).replace(4, 4, big32(first))), "!-4249");
}

// Files that begin with a thumbnail: the image stands in a directory below the first one, or behind
// it.
TEST(ImageDescription, RawPhotographs) {
    const auto image = [](std::uint32_t type, std::uint32_t width, std::uint16_t bits,
                          const TiffFields& more = {}) {
        TiffFields fields{longs(254, {type}), longs(256, {width}), longs(257, {width / 2}),
                          shorts(258, {bits})};
        std::ranges::copy(more, std::back_inserter(fields));
        return fields;
    };
    // The directories behind the first, each of 54 bytes, with nothing that stands elsewhere.
    const auto others = [](std::initializer_list<TiffFields> directories) {
        std::string bytes;
        for (const TiffFields& fields : directories)
            bytes += tags_of(fields, ByteOrder::Big).substr(8);
        return bytes;
    };
    // Behind a directory of five or six entries and its values.
    constexpr std::uint32_t below = 8 + 2 + 6 * 12 + 4 + 2 * 8, second = below + 54;
    const TiffField to_both{330, Long, {below, second}};
    const TiffField as_directories{330, FieldType{13}, {}, big32(below) + big32(second), 2};
    const auto front = [&](std::uint32_t type, const TiffField& sub_directories) {
        return tags_of(image(type, 160, 8, {sub_directories, rationals(282, {300, 1})}),
                       ByteOrder::Big);
    };
    const std::string reduced = others({image(1, 800, 8), image(0, 3040, 12)});
    const Lines thumbnail{"80", "160", "8", tiff_codec, "300"};
    const Lines raw{"1520", "3040", "12", tiff_codec, "300"};
    expect_lines(front(1, to_both) + reduced, raw);
    expect_lines(front(1, as_directories) + reduced, raw);
    expect_lines(front(0, to_both) + reduced, thumbnail); // smaller versions may be larger
    expect_lines(front(2, to_both) + reduced, thumbnail); // a page
    expect_lines(front(1, to_both) + others({image(1, 800, 8), image(4, 900, 1)}), thumbnail);
    expect_lines(front(1, to_both), thumbnail);
    // Below a directory below the first, with a resolution of its own; loops are passed over.
    const TiffFields inner{longs(330, {below + 18})};
    const TiffFields image_below = image(0, 600, 16, {shorts(282, {100}), shorts(296, {3})});
    expect_lines(front(1, longs(330, {8, below})) + others({inner, image_below}),
                 {"300", "600", "16", tiff_codec, "254"});
    expect_lines(front(1, longs(330, {8, below})) + others({{longs(330, {below})}}), thumbnail);
    // In the chain.
    std::string chain = front(1, longs(330, {8, 8})) + others({image(0, 600, 16)});
    chain.replace(8 + 2 + 6 * 12, 4, big32(below));
    expect_lines(chain, {"300", "600", "16", tiff_codec, "300", "72", "2"});
}

// Of directories without end only so many are read.
TEST(ImageDescription, LooksAtSoManyDirectories) {
    TiffField offsets{330, Long, {}};
    for (std::uint32_t i = 1; i <= 5000; ++i)
        offsets.numbers.push_back(20'000 + i);
    EndlessFile file(
        tags_of({longs(254, {1}), longs(256, {16}), longs(257, {9}), offsets}, ByteOrder::Big),
        "\xFF", 300'000'000);
    EXPECT_TRUE(metadata_of("-GetImageDescription", file).starts_with("Height: 9|Width: 16|"));
    EXPECT_LE(file.bytes_read(), 100u * 65'536 * 12);
}

// A grid of hidden tiles with a thumbnail, as telephones make them.
TEST(ImageDescription, Heif) {
    const auto item = [](std::uint16_t id, std::string_view type, std::uint32_t flags = 0) {
        return full_box("infe", big16(id) + big16(0) + std::string(type) + '\0', 2, flags);
    };
    const auto size = [](std::uint32_t width, std::uint32_t height) {
        return full_box("ispe", big32(width) + big32(height));
    };
    const auto file = [&](std::string_view more_properties, std::string_view of_primary) {
        const auto count = static_cast<char>(of_primary.size());
        return box("ftyp", "heic" + big32(0)) +
               full_box(
                   "meta",
                   full_box("pitm", big16(5)) +
                       full_box("iinf", big16(4) + item(1, "hvc1", 1) + item(2, "hvc1", 1) +
                                            item(5, "grid") + item(6, "hvc1")) +
                       full_box("iref", box("dimg", big16(5) + big16(2) + big16(1) + big16(2)) +
                                            box("thmb", big16(6) + big16(1) + big16(5))) +
                       box("iprp", box("ipco", size(400, 300) + std::string(more_properties)) +
                                       full_box("ipma", big32(1) + big16(5) + count +
                                                            std::string(of_primary))));
    };
    const std::string codec = "HEVC|Codec type: hvc1";
    const std::string turn = box("irot", "\1");
    const std::string depth = full_box("pixi", "\3\x0A\x0A\x0A");
    expect_lines(file("", "\1"), {"300", "400", "24", codec});
    expect_lines(file(turn + depth, "\x82\1\3"), {"400", "300", "30", codec});
    EXPECT_EQ(description(file(depth, "\2")), "!-4243"); // no size
    EXPECT_EQ(description(box("ftyp", "isom") + box("moov")), "!-4243");
}

TEST(ImageDescription, ChunksResourcesAndBoxes) {
    const std::string of_webp = "WebP|Codec type: webp";
    const std::uint32_t bits = 399 | 299U << 14U | 1U << 28U;
    expect_lines(webp(riff_chunk("VP8 ", "\0\0\0\x9D\1\x2A\x90\x41\x2C\1"s)),
                 {"300", "400", "24", of_webp});
    expect_lines(webp(riff_chunk("VP8L", "\x2F" + little32(bits))), {"300", "400", "32", of_webp});
    expect_lines(webp(riff_chunk("VP8X", "\2\0\0\0\x8F\1\0\x2B\1\0"s) + riff_chunk("ANIM", "") +
                      riff_chunk("ANMF", "1") + riff_chunk("ANMF", "2")),
                 {"300", "400", "24", of_webp, "72", "72", "2"});
    const std::string info = big32(300U << 16U) + big32(0x10001) + big32(300U << 16U) + big32(0);
    expect_lines(psd(whole_resource(1005, info)),
                 {"107", "160", "32", "Photoshop|Codec type: 8BPS", "300", "300"});
    // 1-bit small, 5 bits of height / 8 - 1, ratio 2 (12:10); then all as usual.
    const std::string stream =
        "\xFF\x0A"s + static_cast<char>(1 | 4U << 1U | 2U << 6U) + static_cast<char>(0b10) + "....";
    const std::string of_jpeg_xl = "JPEG XL|Codec type: jxl ";
    expect_lines(stream, {"40", "48", "24", of_jpeg_xl});
    expect_lines(jpeg_xl(box("jxlp", big32(0) + stream)), {"40", "48", "24", of_jpeg_xl});
    // Not as usual: turned, meant to be shown as a square; 12 bits, halves, and a preview before
    // them.
    for (const auto& [last, depth] :
         {std::pair{'\x10', "36"}, std::pair{'\x0C', "48"}, std::pair{'\x11', "24"}})
        expect_lines("\xFF\x0A\x89\xEC\x20"s + last + "....", {"40", "48", depth, of_jpeg_xl});
}

TEST(ImageDescription, RawPhotographsOfTheirOwnKinds) {
    const auto tiff_of = [](std::string_view kind, const TiffFields& fields) {
        return tags_of(fields).replace(2, kind.size(), kind);
    };
    const TiffFields size{shorts(256, {6000}), shorts(257, {4000})};
    const std::string cropped = big32(2) + big16(0x100) + big16(4) + "full" + big16(0x111) +
                                big16(4) + big16(2008) + big16(3016);
    expect_lines("FUJIFILMCCD-RAW 0201FF000000" + std::string(56, ' ') + big32(0) + big32(0) +
                     big32(100) + big32(28) + cropped,
                 {"2008", "3016", "24", "Fujifilm raw|Codec type: raf "});
    expect_lines(cr3(tiff_of("", size), "", "", ""),
                 {"4000", "6000", "24", "Canon raw|Codec type: CRAW"});
    expect_lines(tiff_of("\x55", {shorts(4, {6}), shorts(5, {8}), shorts(6, {2742}),
                                  shorts(7, {3656}), shorts(10, {12})}),
                 {"2736", "3648", "12", "Panasonic raw|Codec type: rw2 "});
    expect_lines(tiff_of("RO", size), {"4000", "6000", "1", "Camera raw|Codec type: raw "});
}

TEST(ImageDescription, OtherFiles) {
    const std::string tags = tags_of({ascii(271, "Maker")});
    for (const std::string& bytes :
         {""s, "\xFF"s, "GIF88a and so on"s, "II\x2B\0big"s, "%PDF-1.7"s, mrw(tags), "FOVb"s,
          webp(riff_chunk("VP8X", "\2")), "8BPS"s, "\xFF\x0A"s, "IIRO1234"s, "FUJIFILM"s,
          "II\x1A\0\0\0HEAPCCDR"s})
        EXPECT_EQ(description(bytes), "!-4243") << bytes;
}

} // namespace
} // namespace vell::metadata
