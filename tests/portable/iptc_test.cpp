#include "src/metadata/reading/iptc_text.h"

#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::test;

const std::string declared_utf8 = dataset(1, 90, "\x1B%G");
const std::string umlaut = "\xC3\xA4";
const std::string title = dataset(2, 5, "T");
const std::string read = tagged("IPTC 5=T");

TEST(Iptc, DatasetsBecomeTaggedText) {
    const std::string a_umlaut = dataset(2, 80, umlaut);
    const std::string native_umlaut = tagged("IPTC 80=<0:" + umlaut + ">");
    const std::string not_utf8 = dataset(2, 80, "\xE4");
    const struct {
        std::string block;
        std::string expected;
        TextEncoding source = TextEncoding::Native;
        bool detect_utf8 = true;
    } cases[] = {
        {std::string("\x1C\x03\x05\0\1T\x1C\x1C", 8), ""},
        {"junk\x1C\x1C" + title, read},
        {title + dataset(1, 0, "v") + title + "x" + title, read + read}, // up to what is none
        {title + dataset(3, 1, "x") + title, read},
        {dataset(2, 120, ""), "|##IPTC 120||##END 120"},
        {dataset(2, 0, std::string("\0\2", 2)), // the bytes of a number, swapped
         std::string("|##IPTC 0|\2\0|##END 0", 20)},
        {dataset(2, 0, "v"), "|##IPTC 0|v|##END 0"},
        // Encodings.
        {a_umlaut, native_umlaut},
        {a_umlaut + not_utf8, "|##IPTC 80|" + umlaut + "|##END 80|##IPTC 80|<0:\xE4>|##END 80",
         TextEncoding::Utf8},
        {declared_utf8 + a_umlaut, "|##IPTC 80|" + umlaut + "|##END 80", TextEncoding::AsciiMac},
        {declared_utf8 + a_umlaut, "|##IPTC 80|<4:" + umlaut + ">|##END 80", TextEncoding::AsciiMac,
         false},
        {dataset(1, 90, "\x1B%") + a_umlaut, native_umlaut},
        {dataset(2, 90, "\x1B%G") + a_umlaut, // another dataset
         "|##IPTC 90|\x1B%G|##END 90" + native_umlaut},
        // Cut off, and a length in the extended form.
        {title + dataset(2, 5, "TITLE").substr(0, 7), read + "|##IPTC 5|TI|##END 5"},
        {title + dataset(2, 5, "TITLE").substr(0, 4), read},
        {title + std::string("\x1C\x02\x05\x80\x04\0\0\0\1T", 10), read},
    };
    for (const auto& each : cases) {
        MetadataText text;
        ASSERT_TRUE(decode_iptc(each.block, each.detect_utf8, each.source, text));
        EXPECT_EQ(shown(text), each.expected) << "case " << &each - cases;
    }
}

TEST(PhotoshopResources, AreFoundAnywhereInAFile) {
    const std::string next = "<bold blue:||--- NEXT_IPTC_APP_RECORD --->";
    const std::string warning = "<bold red:||WARNING: MULTIPLE_IPTC_APP_RECORDS_FOUND|>";
    const std::string block = resource(0x0404, title);
    const std::string empty = resource(0x0404, "");
    const std::string url = resource(0x040B, "http://a/\xE4");
    const std::string zeros(20'000, '\0');
    const std::string jfif("JFIF\0", 5);
    const std::string other = dataset(2, 5, "O");
    const char* const all = "GetIPTC -ParseAllApplicationRecords";
    expect_metadata({
        {"GetIPTC", "8BIM8BI" + block + block, read},
        {"GetIPTC", zeros + resource(0x0404, title, "odd") + zeros, read},
        {"GetIPTC", resource(0x0404, title, "even") + other, read},
        {"GetIPTC", empty + block, read},
        {"GetIPTC", empty, "!-2026"},
        {"GetIPTC", url, "!-2026"},
        {"GetIPTC", "", "!-2026"},
        {"GetIPTC", resource(0x0404, "x"), ""},
        {"GetIPTC GetImageURL", url + block, read},
        // Sizes beyond what is looked at.
        {"GetIPTC", resource(0x0404, title, "", 7), "!-207"},
        {"GetIPTC", resource(0x0404, title + zeros), "!-207"},
        {"GetIPTC", "8BIM\4\4", "!-207"},
        {"GetIPTC", resource(0x0404, title, "", 0xFFFFFFFF), "!-207"},
        // An image behind it: the header does not count.
        {"GetIPTC", resource(0x0404, title, "", 0xFFFFFFFF) + jfif, read},
        {"GetIPTC", resource(0x0404, title, "", 0) + jfif, read},
        {"GetIPTC", resource(0x0404, title, "", 0xFFFFFFFF) + zeros + jfif, "!-207"},
        // All of them.
        {all, block, read},
        {all, block + zeros + empty + block + "8BIM", read + next + read + warning},
        {all, block + block + jfif + block, read + next + read + next + read + warning},
        {all, block + resource(0x0404, title, "", 999), read + "!-207"},
        // The image URL.
        {"GetImageURL", zeros + resource(0x040B, "") + block + url, "<0:http://a/\xE4>"},
        {"GetImageURL", block, "!-2026"},
        {"GetImageURL", url.substr(0, 15), "!-207"},
    });

    // Wherever the window over the file ends.
    for (std::size_t before = 65'536 - 40; before < 65'536 + 2; ++before)
        EXPECT_EQ(metadata_of("GetIPTC", std::string(before, '8') + block), read) << before;
}

TEST(PhotoshopResources, OfTiffFilesStandInATag) {
    const auto tiff = [](std::uint16_t tag) {
        return build_tiff(ByteOrder::Little,
                          {.first = {undefined(tag, declared_utf8 + dataset(2, 5, umlaut)),
                                     ascii(271, "8BIM\4\4")}});
    };
    EXPECT_EQ(metadata_of("GetIPTC", tiff(33723)), "|##IPTC 5|" + umlaut + "|##END 5");
    EXPECT_EQ(metadata_of("GetIPTC", tiff(33724)), "!-2026");
    EXPECT_EQ(metadata_of("GetImageURL", tiff(1) + resource(0x040B, "u")), "u");
}

} // namespace
} // namespace vell::metadata
