// Descriptions of images from headers that are made here.
#include "src/metadata/image_description.h"
#include "tests/portable/integers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vell::metadata {
namespace {

using namespace std::string_literals;

using testing::big16;
using testing::big32;
using testing::little32;

// Lines by "|", a failure by its number.
std::string description(const std::string& bytes) {
    const auto file = files::memory_file(bytes);
    auto reader = files::BufferedReader::over(*file);
    MetadataText text;
    const Result<void> done = describe_image(*reader, text);
    if (!done) {
        EXPECT_TRUE(text.empty());
        return std::to_string(number(done.error()));
    }
    std::string described = text.pieces()[0].bytes;
    std::ranges::replace(described, '\r', '|');
    return described;
}

// Size, depth and resolution, then the codec, then the number of images.
std::string lines(std::string_view height, std::string_view width, std::string_view depth,
                  std::string_view horizontal, std::string_view vertical, std::string_view codec,
                  std::string_view images, const std::string& bytes) {
    std::string text;
    const auto add = [&](std::string_view name, std::string_view value) {
        text += std::string(name) + std::string(value);
    };
    add("Height: ", height);
    add("|Width: ", width);
    add("|Depth: ", depth);
    add("|Horizontal Res: ", horizontal);
    add("|Vertical Res: ", vertical);
    add("|", codec);
    add("|Image count: ", images);
    add("|Data size: ", std::to_string(bytes.size()));
    return text;
}

std::string segment(char marker, const std::string& data) {
    return "\xFF"s + marker + big16(static_cast<std::uint16_t>(data.size() + 2)) + data;
}

struct EntryOf {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    std::uint32_t value;
};
// A big-endian directory that stands at `at`, and one rational behind it.
std::string directory(const std::vector<EntryOf>& entries, std::uint32_t next,
                      std::uint32_t numerator = 0, std::uint32_t denominator = 0) {
    std::string bytes = big16(static_cast<std::uint16_t>(entries.size()));
    for (const EntryOf& entry : entries) {
        bytes += big16(entry.tag) + big16(entry.type) + big32(entry.count);
        bytes += entry.type == 3 && entry.count == 1
                     ? big16(static_cast<std::uint16_t>(entry.value)) + big16(0)
                     : big32(entry.value);
    }
    return bytes + big32(next) + big32(numerator) + big32(denominator);
}
const std::string tiff_start = "MM\0\x2A"s + big32(8);

TEST(ImageDescription, Jpeg) {
    constexpr std::string_view codec = "Codec name: Photo - JPEG|Codec type: jpeg";
    const std::string frame =
        segment('\xC2', "\x08"s + big16(480) + big16(640) + "\x03 components"s);
    const std::string jfif_inch =
        segment('\xE0', "JFIF\0\1\2\1"s + big16(300) + big16(150) + "\0\0"s);
    const std::string jfif_centimetre =
        segment('\xE0', "JFIF\0\1\2\2"s + big16(100) + big16(0) + "\0\0"s);
    const std::string jfif_aspect =
        segment('\xE0', "JFIF\0\1\2\0"s + big16(1) + big16(1) + "\0\0"s);
    const std::string exif =
        segment('\xE1', "Exif\0\0"s + tiff_start +
                            directory({{282, 5, 1, 38}, {283, 5, 1, 38}}, 0, 1001, 10));
    const struct {
        std::string segments;
        std::string_view horizontal, vertical;
    } cases[] = {
        {"", "72", "72"},
        {jfif_inch, "300", "150"},
        {jfif_centimetre, "254", "72"},
        {jfif_aspect, "72", "72"},
        {jfif_aspect + segment('\xFE', "comment") + "\xFF"s + exif, "100.1", "100.1"},
        {exif + jfif_inch, "300", "150"},
    };
    for (const auto& [segments, horizontal, vertical] : cases) {
        const std::string file = "\xFF\xD8"s + segments + frame + "\xFF\xDA"s;
        EXPECT_EQ(description(file),
                  lines("480", "640", "24", horizontal, vertical, codec, "1", file));
    }
    EXPECT_EQ(description("\xFF\xD8"s + jfif_inch + "\xFF\xDA"s), "-4247");
    EXPECT_EQ(description("\xFF\xD8\xFF\xE0\0\1"s), "-92");
    EXPECT_EQ(description("\xFF\xD8"s + frame.substr(0, 9)), "-302");
}

std::string chunk(const std::string& type, const std::string& data) {
    return big32(static_cast<std::uint32_t>(data.size())) + type + data + "crc?";
}

TEST(ImageDescription, Png) {
    constexpr std::string_view codec = "Codec name: PNG|Codec type: png ";
    const std::string signature = "\x89PNG\r\n\x1A\n";
    const auto header = [](std::uint8_t depth, std::uint8_t colour) {
        return chunk("IHDR", big32(70'000) + big32(20) + static_cast<char>(depth) +
                                 static_cast<char>(colour) + "\0\0\0"s);
    };
    const struct {
        std::uint8_t depth, colour;
        std::string_view bits;
    } cases[] = {{1, 0, "1"}, {8, 2, "24"}, {4, 3, "4"}, {16, 4, "32"}, {16, 6, "64"}};
    for (const auto& [depth, colour, bits] : cases) {
        const std::string file = signature + header(depth, colour);
        EXPECT_EQ(description(file), lines("20", "70000", bits, "72", "72", codec, "1", file));
    }
    const std::string file = signature + chunk("CgBI", "1234") + header(8, 2) +
                             chunk("acTL", big32(7) + big32(0)) +
                             chunk("pHYs", big32(2835) + big32(11'811) + "\1"s) +
                             chunk("IDAT", "") + chunk("pHYs", big32(1) + big32(1) + "\1"s);
    EXPECT_EQ(description(file), lines("20", "70000", "24", "72.009", "299.999", codec, "7", file));
    const std::string aspect =
        signature + header(8, 2) + chunk("pHYs", big32(2) + big32(1) + "\0"s);
    EXPECT_EQ(description(aspect), lines("20", "70000", "24", "72", "72", codec, "1", aspect));
    EXPECT_EQ(description(signature + chunk("tEXt", "a") + header(8, 2)), "-4247");
    EXPECT_EQ(description(signature + header(8, 2).substr(0, 15)), "-302");
}

TEST(ImageDescription, Gif) {
    constexpr std::string_view codec = "Codec name: GIF|Codec type: gif ";
    const std::string screen = "GIF89a\x40\1\xF0\0\x91\0\0"s + std::string(12, 'p');
    const std::string extension = "\x21\xF9\4data\0"s;
    const std::string image = "\x2C\0\0\0\0\x40\1\xF0\0\x80"s + "pppppp\2\3abc\1d\0"s;
    const std::string whole = screen + extension + image + extension + image + "\x3B" + image;
    EXPECT_EQ(description(whole), lines("240", "320", "2", "72", "72", codec, "2", whole));
    const std::string cut = screen + image + image.substr(0, 20);
    EXPECT_EQ(description(cut), lines("240", "320", "2", "72", "72", codec, "2", cut));
    EXPECT_EQ(description(screen.substr(0, 10)), "-302");
}

TEST(ImageDescription, Bmp) {
    constexpr std::string_view codec = "Codec name: BMP|Codec type: WRLE";
    const std::string file_header = "BM" + std::string(12, '\0');
    const std::string info = little32(0xFFFF'FF00) + "\1\0\x18\0"s + little32(0) + little32(0);
    const std::string with_resolution =
        file_header + little32(40) + little32(320) + info + little32(11'811) + little32(0);
    EXPECT_EQ(description(with_resolution),
              lines("256", "320", "24", "299.999", "72", codec, "1", with_resolution));
    const std::string core = file_header + little32(12) + "\x40\1\xF0\0\1\0\4\0"s;
    EXPECT_EQ(description(core), lines("240", "320", "4", "72", "72", codec, "1", core));
    EXPECT_EQ(description(file_header + little32(13) + std::string(40, '\0')), "-4247");
    EXPECT_EQ(description(file_header + little32(40) + "short"), "-302");
}

TEST(ImageDescription, Tiff) {
    constexpr std::string_view codec = "Codec name: TIFF|Codec type: tiff";
    const std::vector<EntryOf> entries = {
        {256, 4, 1, 70'000}, {257, 3, 1, 480},         {258, 3, 3, 98}, {277, 3, 1, 3},
        {282, 5, 1, 98},     {283, 5, 1, 0xFFFF'FFF0}, {296, 3, 1, 3}};
    // The bits of a sample stand where the resolution does: 8, then 0, in its upper half.
    const std::string first = directory(entries, 106, 0x0008'0000, 10'000);
    const std::string file = tiff_start + first + directory({{256, 3, 1, 9}}, 8);
    EXPECT_EQ(description(file), lines("480", "70000", "24", "133.169", "72", codec, "2", file));

    const std::string small =
        "II\x2A\0\x08\0\0\0\2\0\0\1\3\0\1\0\0\0\5\0\0\0\1\1\3\0\1\0\0\0\6\0\0\0"s;
    EXPECT_EQ(description(small), lines("6", "5", "1", "72", "72", codec, "1", small));
    EXPECT_EQ(description(tiff_start + directory({{256, 3, 1, 9}}, 0)), "-4249");
    EXPECT_EQ(description("MM\0\x2A"s + big32(4) + directory(entries, 0)), "-4249");
    EXPECT_EQ(description("MM\0\x2A"s + big32(400) + directory(entries, 0)), "-4249");
}

TEST(ImageDescription, OtherFiles) {
    for (const std::string& bytes :
         {""s, "\xFF"s, "GIF88a and so on"s, "II\x2B\0big"s, "%PDF-1.7"s})
        EXPECT_EQ(description(bytes), "-4243");
}

} // namespace
} // namespace vell::metadata
