#include "src/metadata/reading/png_metadata.h"

#include "src/base/inflate.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::test;

std::string text_chunk(const std::string& keyword, const std::string& text) {
    return png_chunk("tEXt", keyword + '\0' + text);
}
std::string xmp_chunk(const std::string& text, char compressed = 0, char method = 0,
                      const std::string& keyword = "XML:com.adobe.xmp") {
    return png_chunk("iTXt",
                     keyword + '\0' + compressed + method + std::string("de\0t\0", 5) + text);
}

TEST(PngChunks, GiveTagsTextsAndPackets) {
    const std::string exif =
        png_chunk("eXIf", build_tiff(ByteOrder::Big, {.first = {ascii(271, "A")}}));
    const std::string packet = "<?xpacket begin=\"\xEF\xBB\xBF\"?>\xC3\xA4";
    const std::string readable = "<?xpacket begin=\"0xEFBBBF\"?>\xC3\xA4";
    const std::string image = png_chunk("IDAT", std::string(9000, 'i'));
    const std::string apple = png_chunk("CgBI", "abcd");
    const char* const texts = "-GetTextChunkFromPNG";
    const std::string signature = "\x89PNG\r\n\x1A\n";
    const std::string read = tagged("EXIF 271=A");
    expect_metadata({
        {"GetExif GetXMP", png({image, exif, xmp_chunk(packet)}), read},
        {"GetExif", png({exif, exif}), read}, // one is to be there
        {"GetExif", signature + apple + png_chunk("IHDR", std::string(13, '\1')) + exif, read},
        {"GetGPS", png({exif}), "!-2026"},
        {"GetExif", png({png_chunk("eXIf", "", 100)}), "!-302"},
        {"GetExif", png({png_chunk("junk", "", 0xFFFFFFFF), exif}), "!-2026"},
        {"GetExif", signature + apple + exif, "!-4247"},
        {"GetExif", png({}).substr(0, 29), "!-4247"},
        {"GetExif", signature + png_chunk("IDAT", std::string(30, 'i')), "!-4247"},
        {"GetExif", signature + png_chunk("CgBI", "", 0xFFFFFFF0) + exif, "!-4247"},
        // Texts.
        {texts,
         png({text_chunk("Title", "a\xE4"), image, text_chunk("Empty", ""),
              png_chunk("tEXt", "no zero"), text_chunk("Key", "b")}),
         "Title: <5:a\xE4>|Key: b|"},
        {texts, png({exif}), ""},
        {texts, png({text_chunk("K", "v"), png_chunk("tEXt", "")}), "K: v|!-208"},
        {texts, png({png_chunk("tEXt", "K", 0x7FFFFFFF)}), "!-302"},
        // Packets.
        {"GetXMP", png({xmp_chunk("x", 0, 0, "Comment"), xmp_chunk(packet), xmp_chunk("2")}),
         readable},
        {"GetXMP", png({xmp_chunk(deflated(packet), 1)}), readable},
        {"GetXMP", png({xmp_chunk("\xE4")}), "<0:\xE4>"}, // against the rules of the format
        {"GetXMP", png({text_chunk("XML:com.adobe.xmp", "x")}), "!-2026"},
        {"GetXMP", png({png_chunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0de\0", 23))}),
         "!-302"},
        {"GetXMP", png({png_chunk("iTXt", std::string("XML:com.adobe.xmp\0", 18))}), "!-302"},
        {"GetXMP", png({xmp_chunk("junk", 1)}), "!-4296"},
        {"GetXMP", png({xmp_chunk(deflated(packet), 1, 1)}), "!-4296"},
        {"GetXMP", png({xmp_chunk(deflated(packet).substr(0, 20), 1)}), "!-4296"},
    });
}

TEST(PngChunks, ExpandToALimit) {
    const std::string much = deflated(std::string(100'000, 'x'));
    EXPECT_EQ(inflate_within(much, 100'000)->size(), 100'000u);
    EXPECT_EQ(inflate_within(much, 99'999).error(), ErrorCode::ResourceTooLarge);
    EXPECT_EQ(inflate_within("", 10).error(), ErrorCode::CompressedDataDamaged);
    const std::string bomb = deflated(std::string((16 << 20) + 1, '\0'));
    EXPECT_LT(bomb.size(), 100'000u);
    EXPECT_EQ(metadata_of("GetXMP", png({xmp_chunk(bomb, 1)})), "!-207");
}

} // namespace
} // namespace vell::metadata
