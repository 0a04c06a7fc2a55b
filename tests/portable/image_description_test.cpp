// Descriptions of images from headers that are made here.
#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace std::string_literals;
using namespace vell::test;

std::string description(const std::string& bytes) {
    return metadata_of("-GetImageDescription", bytes);
}

struct Lines {
    std::string height, width, depth, horizontal, vertical, codec, images = "1";
};
void expect_lines(const std::string& file, const Lines& lines) {
    EXPECT_EQ(description(file),
              "Height: " + lines.height + "|Width: " + lines.width + "|Depth: " + lines.depth +
                  "|Horizontal Res: " + lines.horizontal + "|Vertical Res: " + lines.vertical +
                  "|Codec name: " + lines.codec + "|Image count: " + lines.images +
                  "|Data size: " + std::to_string(file.size()));
}

TEST(ImageDescription, Jpeg) {
    const auto jfif = [](char unit, std::uint16_t horizontal, std::uint16_t vertical) {
        return segment(SegmentMarker::App0,
                       "JFIF\0\1\2"s + unit + big16(horizontal) + big16(vertical) + "\0\0"s);
    };
    const std::string frame =
        segment(SegmentMarker::Sof2, "\x08"s + big16(480) + big16(640) + "\x03 components"s);
    const std::string inch = jfif(1, 300, 150);
    const std::string aspect = jfif(0, 1, 1);
    const std::string exif =
        exif_segment(build_tiff(ByteOrder::Big, {.first = {{282, FieldType::Rational, {1001, 10}},
                                                           {283, FieldType::Rational, {99, 1}}}}));
    const struct {
        std::string segments, horizontal, vertical;
    } cases[] = {
        {"", "72", "72"},
        {inch, "300", "150"},
        {jfif(2, 100, 0), "254", "72"},
        {aspect + segment(SegmentMarker::Com, "comment") + "\xFF"s + exif, "100.1", "99"},
        {exif + inch, "300", "150"},
    };
    for (const auto& [segments, horizontal, vertical] : cases)
        expect_lines("\xFF\xD8"s + segments + frame + "\xFF\xDA"s,
                     {"480", "640", "24", horizontal, vertical, "Photo - JPEG|Codec type: jpeg"});
    EXPECT_EQ(description("\xFF\xD8"s + inch + "\xFF\xDA"s), "!-4247");
    EXPECT_EQ(description("\xFF\xD8\xFF\xE0\0\1"s), "!-92");
    EXPECT_EQ(description("\xFF\xD8"s + frame.substr(0, 9)), "!-302");
}

TEST(ImageDescription, Png) {
    const std::string codec = "PNG|Codec type: png ";
    const std::string signature = "\x89PNG\r\n\x1A\n";
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
        expect_lines(signature + header(depth, colour) + density(2, 1, 0), // an aspect ratio
                     {"20", "70000", bits, "72", "72", codec});
    expect_lines(signature + png_chunk("CgBI", "1234") + header(8, 2) +
                     png_chunk("acTL", big32(7) + big32(0)) + density(2835, 11'811, 1) +
                     png_chunk("IDAT", "") + density(1, 1, 1),
                 {"20", "70000", "24", "72.009", "299.999", codec, "7"});
    EXPECT_EQ(description(signature + png_chunk("tEXt", "a") + header(8, 2)), "!-4247");
    EXPECT_EQ(description(signature + header(8, 2).substr(0, 15)), "!-302");
}

TEST(ImageDescription, Gif) {
    const std::string screen = "GIF89a\x40\1\xF0\0\x91\0\0"s + std::string(12, 'p');
    const std::string extension = "\x21\xF9\4data\0"s;
    const std::string image = "\x2C\0\0\0\0\x40\1\xF0\0\x80"s + "pppppp\2\3abc\1d\0"s;
    const Lines lines{"240", "320", "2", "72", "72", "GIF|Codec type: gif ", "2"};
    expect_lines(screen + extension + image + extension + image + "\x3B" + image, lines);
    expect_lines(screen + image + image.substr(0, 20), lines);
    EXPECT_EQ(description(screen.substr(0, 10)), "!-302");
}

TEST(ImageDescription, Bmp) {
    const std::string codec = "BMP|Codec type: WRLE";
    const std::string file_header = "BM" + std::string(12, '\0');
    const std::string info = little32(0xFFFF'FF00) + "\1\0\x18\0"s + little32(0) + little32(0);
    expect_lines(file_header + little32(40) + little32(320) + info + little32(11'811) + little32(0),
                 {"256", "320", "24", "299.999", "72", codec});
    expect_lines(file_header + little32(12) + "\x40\1\xF0\0\1\0\4\0"s,
                 {"240", "320", "4", "72", "72", codec});
    EXPECT_EQ(description(file_header + little32(13) + std::string(40, '\0')), "!-4247");
    EXPECT_EQ(description(file_header + little32(40) + "short"), "!-302");
}

TEST(ImageDescription, Tiff) {
    using enum FieldType;
    const std::string codec = "TIFF|Codec type: tiff";
    std::string file = build_tiff(ByteOrder::Big, {.first = {{256, Long, {70'000}},
                                                             {257, Short, {480}},
                                                             {258, Short, {8, 8, 8}},
                                                             {277, Short, {3}},
                                                             {282, Rational, {524'288, 10'000}},
                                                             {283, Rational, {}, "", 1, ~0u},
                                                             {296, Short, {3}}}});
    file.replace(10 + 7 * 12, 4, big32(static_cast<std::uint32_t>(file.size())));
    file += big16(0) + big32(8); // a second directory, which leads back to the first
    expect_lines(file, {"480", "70000", "24", "133.169", "72", codec, "2"});
    expect_lines(build_tiff(ByteOrder::Little, {.first = {{256, Short, {5}}, {257, Short, {6}}}})
                     .substr(0, 34), // without the offset of the next one
                 {"6", "5", "1", "72", "72", codec});
    EXPECT_EQ(description(build_tiff(ByteOrder::Big, {.first = {{256, Short, {9}}}})), "!-4249");
    for (const std::uint32_t first : {4u, 400u})
        EXPECT_EQ(description(std::string(file).replace(4, 4, big32(first))), "!-4249");
}

// Files that begin with a thumbnail: the image stands in a directory below the first one, or behind
// it.
TEST(ImageDescription, RawPhotographs) {
    using enum FieldType;
    const std::string codec = "TIFF|Codec type: tiff";
    const auto image = [](std::uint32_t type, std::uint32_t width, std::uint16_t bits) {
        return TiffFields{{254, Long, {type}},
                          {256, Long, {width}},
                          {257, Long, {width / 2}},
                          {258, Short, {bits}}};
    };
    // The directories behind the first, each of 54 bytes, with nothing that stands elsewhere.
    const auto others = [](std::initializer_list<TiffFields> directories) {
        std::string bytes;
        for (const TiffFields& fields : directories)
            bytes += build_tiff(ByteOrder::Big, {.first = fields}).substr(8);
        return bytes;
    };
    const auto with = [](TiffFields fields, const TiffField& field) {
        fields.push_back(field);
        return fields;
    };
    // Behind a directory of five or six entries and its values.
    constexpr std::uint32_t below = 8 + 2 + 6 * 12 + 4 + 2 * 8, second = below + 54;
    const TiffField to_both{330, Long, {below, second}};
    const TiffField as_directories{330, FieldType{13}, {}, big32(below) + big32(second), 2};
    const TiffField resolution{282, Rational, {300, 1}};
    const auto front = [&](std::uint32_t type, const TiffField& sub_directories) {
        return build_tiff(ByteOrder::Big,
                          {.first = with(with(image(type, 160, 8), sub_directories), resolution)});
    };
    const std::string reduced = others({image(1, 800, 8), image(0, 3040, 12)});
    const Lines thumbnail{"80", "160", "8", "300", "72", codec};
    const Lines raw{"1520", "3040", "12", "300", "72", codec};
    expect_lines(front(1, to_both) + reduced, raw);
    expect_lines(front(1, as_directories) + reduced, raw);
    expect_lines(front(0, to_both) + reduced, thumbnail); // smaller versions may be larger
    expect_lines(front(2, to_both) + reduced, thumbnail); // a page
    expect_lines(front(1, to_both) + others({image(1, 800, 8), image(4, 900, 1)}), thumbnail);
    expect_lines(front(1, to_both), thumbnail);
    // Below a directory below the first, with a resolution of its own; loops are passed over.
    const TiffFields inner{{330, Long, {below + 18}}};
    const TiffFields image_below =
        with(with(image(0, 600, 16), {282, Short, {100}}), {296, Short, {3}});
    expect_lines(front(1, {330, Long, {8, below}}) + others({inner, image_below}),
                 {"300", "600", "16", "254", "72", codec});
    expect_lines(front(1, {330, Long, {8, below}}) + others({{{330, Long, {below}}}}), thumbnail);
    // In the chain.
    std::string chain = front(1, {330, Long, {8, 8}}) + others({image(0, 600, 16)});
    chain.replace(8 + 2 + 6 * 12, 4, big32(below));
    expect_lines(chain, {"300", "600", "16", "300", "72", codec, "2"});
}

// Of directories without end only so many are read.
TEST(ImageDescription, LooksAtSoManyDirectories) {
    using enum FieldType;
    TiffField offsets{330, Long, {}};
    for (std::uint32_t i = 1; i <= 5000; ++i)
        offsets.numbers.push_back(20'000 + i);
    EndlessFile file(
        build_tiff(ByteOrder::Big,
                   {.first = {{254, Long, {1}}, {256, Long, {16}}, {257, Long, {9}}, offsets}}),
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
    expect_lines(file("", "\1"), {"300", "400", "24", "72", "72", codec});
    expect_lines(file(turn + depth, "\x82\1\3"), {"400", "300", "30", "72", "72", codec});
    EXPECT_EQ(description(file(depth, "\2")), "!-4243"); // no size
    EXPECT_EQ(description(box("ftyp", "isom") + box("moov")), "!-4243");
}

TEST(ImageDescription, OtherFiles) {
    for (const std::string& bytes :
         {""s, "\xFF"s, "GIF88a and so on"s, "II\x2B\0big"s, "%PDF-1.7"s})
        EXPECT_EQ(description(bytes), "!-4243");
}

} // namespace
} // namespace vell::metadata
