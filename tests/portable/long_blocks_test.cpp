// Blocks that are longer than any that is held in memory, and the memory that the longest ones
// take.
#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/writing/block_place.h"
#include "src/pictures/inside/orientation.h"
#include "src/pictures/inside/previews.h"
#include "tests/portable/held_memory.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::metadata {
namespace {

using namespace vell::testing;
using namespace std::string_literals;

constexpr std::uint32_t three_gigabytes = 3U << 30U;
constexpr std::uint64_t four_gigabytes = 1ULL << 32U;
// What is read and held of a file whose blocks are too long: headers, and a few buffers.
constexpr std::uint64_t little = 1U << 18U;

const std::string png_start = "\x89PNG\r\n\x1A\n" + png_chunk("IHDR", std::string(13, '\1'));

std::string png_with(const std::string& type, const std::string& data) {
    return png_start + big32(three_gigabytes) + type + data;
}
std::string tiff_with(std::uint16_t tag, FieldType type) {
    return build_tiff(ByteOrder::Little, {.first = {{tag, type, {}, {}, three_gigabytes, 4096}}});
}
std::string webp_with(const std::string& type) {
    return "RIFF" + little32(0xFFFF'FFF0) + "WEBP" + type + little32(three_gigabytes);
}
std::string psd_with(std::uint16_t id) {
    return "8BPS" + big16(1) + std::string(6, '\0') + big16(4) + big32(107) + big32(160) +
           big16(8) + big16(3) + big32(0) + big32(three_gigabytes + 100) +
           resource(id, "", "", three_gigabytes);
}
constexpr BlockKinds everything{true, true, true, true, true, true, true};
const std::string packet_type = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";

// What is done with a file that goes on for gigabytes takes next to nothing of it, and of memory.
template <typename Action>
void expect_little(const std::string& start, Action action) {
    EndlessFile file(start, "x", four_gigabytes);
    const auto held = most_memory_held([&] { action(file); });
    EXPECT_LT(file.bytes_read(), little) << start.substr(0, 100);
    EXPECT_LT(held.value_or(0), little) << start.substr(0, 100);
}

TEST(LongBlocks, AreRefusedUnread) {
    const struct {
        const char* switches;
        std::string start;
        const char* expected;
    } cases[] = {
        {"GetExif", png_with("eXIf", ""), "!-207"},
        {"GetXMP", png_with("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s), "!-207"},
        {"-GetTextChunkFromPNG", png_with("tEXt", "Title\0"s), "!-207"},
        {"GetXMP", tiff_with(700, FieldType::Byte), "!-207"},
        {"GetIPTC", tiff_with(33723, FieldType::Undefined), "!-207"},
        {"-GetIccProfileDescription", tiff_with(34675, FieldType::Undefined), "!-207"},
        {"GetExif", tiff_with(271, FieldType::Undefined),
         "|##EXIF 271|<CORRUPT EXIF TAG>|##END 271!-4249"},
        {"GetXMP", webp_with("XMP "), "!-71"},
        {"-GetIccProfileDescription", webp_with("ICCP"), "!-71"},
        {"GetXMP", file_type + big32(0xC000'0000) + "uuid" + packet_type, "!-71"},
    };
    for (const auto& each : cases)
        expect_little(each.start, [&](files::File& file) {
            if (std::string_view(each.expected) != "!-71") {
                EXPECT_EQ(metadata_of(each.switches, file), each.expected) << each.switches;
                return;
            }
            // Where such a file is no JPEG, a packet is looked for in all of it: not here.
            auto reader = files::BufferedReader::over(file);
            const auto blocks = find_blocks(formats::Window(*reader), everything);
            EXPECT_TRUE(blocks && !blocks->xmp && !blocks->icc) << each.switches;
        });
}

TEST(LongBlocks, AreLeftOutOfWhatIsFound) {
    const std::string packet_box = big32(0xC000'0000) + "xml ";
    for (const std::string& start :
         {png_with("eXIf", ""), png_with("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s),
          png_with("iCCP", "name\0\0"s), png_with("zTXt", "Raw profile type iptc\0\0"s),
          tiff_with(700, FieldType::Byte), tiff_with(34377, FieldType::Undefined),
          webp_with("XMP "), webp_with("ICCP"), psd_with(0x0404), psd_with(0x0424),
          psd_with(0x040F), file_type + packet_box,
          box("JXL ", "\r\n\x87\n") + box("ftyp", "jxl " + big32(0) + "jxl ") + packet_box})
        expect_little(start, [&](files::File& file) {
            auto reader = files::BufferedReader::over(file);
            const auto blocks = find_blocks(formats::Window(*reader), everything);
            EXPECT_TRUE(blocks && !blocks->xmp && !blocks->icc && !blocks->iptc &&
                        blocks->texts.empty());
            EXPECT_TRUE(pictures::orientation_of(*reader));
            EXPECT_TRUE(pictures::find_pictures(*reader));
        });
}

TEST(LongBlocks, AreNotWrittenAnew) {
    const struct {
        BlockKind kind;
        std::string start;
    } cases[] = {
        {BlockKind::Exif, png_with("eXIf", "")},
        {BlockKind::Xmp, png_with("iTXt", "XML:com.adobe.xmp\0\0\0\0\0"s)},
        {BlockKind::Exif, png_with("tEXt", "Raw profile type exif\0"s)},
        {BlockKind::Comment, png_with("zTXt", "Comment\0\0"s)},
        {BlockKind::Exif, webp_with("EXIF")},
        {BlockKind::Xmp, webp_with("XMP ")},
    };
    for (const auto& each : cases)
        expect_little(each.start, [&](files::File& file) {
            auto reader = files::BufferedReader::over(file);
            const std::u16string_view name = u"picture";
            const auto place = find_block_place(*reader, {each.kind, "<x/>", name});
            ASSERT_FALSE(place);
            EXPECT_EQ(place.error(), ErrorCode::ResourceTooLarge);
        });
}

} // namespace
} // namespace vell::metadata
