// What is read of JPEG segments, PNG chunks and Photoshop's resources.
#include "src/base/inflate.h"
#include "src/metadata/reading/iptc_text.h"
#include "tests/portable/container_builder.h"
#include "tests/portable/metadata_cases.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata::metadata_reading_test {
namespace {

using namespace vell::test;
using enum SegmentMarker;

std::string exif_block(const std::string& make) {
    return tags_of({ascii(271, make)});
}
const std::string tags = tagged("EXIF 271=A");
const std::string umlaut = "\xC3\xA4";
const std::string packet = "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W\"?>" + umlaut;
const std::string readable = "<?xpacket begin=\"0xEFBBBF\" id=\"W\"?>" + umlaut;

std::string jpeg_exif(const std::string& make) {
    return exif_segment(exif_block(make));
}
std::string comment(const std::string& text) {
    return segment(Com, text);
}

TEST(JpegSegments, AreReadAsFarAsTheyAreWanted) {
    const std::string a = jpeg_exif("A");
    const std::string c = comment("hi"), hi = "|##JCOM|hi|##END ";
    const std::string app12 = segment(App12, "duck");
    expect_metadata({
        {"GetExif", jpeg({a, jpeg_exif("B")}), tags}, // the first one only
        {"GetExif", jpeg({packet_segment("x"), a}), tags},
        {"GetExif", jpeg({c}), "!-2026"},
        {"GetExif GetXMP", jpeg({a, packet_segment("x")}), tags}, // tags before packets
        {"GetJPEGComment", jpeg({c, comment("2")}), hi},
        {"GetJPEGComment", jpeg({app12, c}), "|##JCOM|duck|##END " + hi},
        {"GetJPEGComment", jpeg({app12}), "|##JCOM|duck|##END !-2026"},
        {"GetJPEGComment SourceMacCharset", jpeg({comment("\xE4")}), "|##JCOM|<4:\xE4>|##END "},
        // Two items.
        {"GetExif GetJPEGComment", jpeg({c, comment("2"), a}), hi + "|##JCOM|2|##END "},
        // Fill bytes, bytes between segments, frame headers, markers without a segment.
        {"GetJPEGComment",
         jpeg({"junk", "\xFF\xFF\xFF", segment(Sof2, "frame\xFF\xFE"), "\xFF\xD0", c}), hi},
        {"GetJPEGComment", jpeg({"\xFF\x00\x00\x06\xFF\xD9zz"s, c}), hi},
        {"GetJPEGComment", jpeg({"\xFF\xD9", c}), "!-2026"},
        // Lengths that cannot be.
        {"GetJPEGComment", jpeg({segment(Com, "")}), "!-92"},
        {"GetExif", jpeg({segment(App1, "", 1)}), "!-92"},
        {"GetJPEGComment", jpeg({segment(App0, "", 0), c}), hi},
        {"GetJPEGComment", jpeg({segment(Com, "hi", 999)}), "!-302"},
        {"GetExif", jpeg({segment(App1, a.substr(4), 999)}), "!-302"},
        {"GetExif", jpeg({segment(App1, "Ex")}), "!-2026"},
        // Files that end early.
        {"GetJPEGComment", "\xFF\xD9", "!-71"},
        {"GetJPEGComment", "\xFF\xD8\xFF\xFE\x00"s, "!-39"},
        {"GetExif", "\xFF\xD8" + segment(Dqt, "q", 60'000), "!-39"},
        {"GetExif GetGPS", "\xFF\xD8" + a, tags},
    });
}

TEST(JpegSegments, XmpComesWithItsIdentifierAndAReadableHeader) {
    const std::string identifier = "http://ns.adobe.com/xap/1.0/|";
    expect_metadata({
        {"GetXMP -SourceUTF8Charset",
         jpeg({jpeg_exif("A"), packet_segment(packet), packet_segment("2")}),
         identifier + readable},
        {"GetXMP", jpeg({packet_segment(packet)}), identifier + "<0:" + readable + ">"},
        // Without its end the identifier is all that there is.
        {"GetXMP", jpeg({segment(App1, "http://ns.adobe.com/x")}), "http://ns.adobe.com/x"},
        {"GetXMP", jpeg({jpeg_exif("A")}), "!-2026"},
        // What agrees with the identifier up to some byte has been given by then.
        {"GetXMP", jpeg({segment(App1, "http://example"), packet_segment("p")}),
         "http://" + identifier + "p"},
        {"GetXMP", jpeg({}) + "...<?xpacket begin=''?><x/><?xpacket end='w'?>..",
         "<?xpacket begin=''?><x/><?xpacket end='w'?>"},
        // Cut off; no packet elsewhere either.
        {"GetXMP", jpeg({segment(App1, packet_segment("p").substr(4), 999)}),
         "http://ns.adobe.com/!-2026"},
    });
}

// A profile whose name stands where the first chunk ends.
constexpr std::size_t chunk_size = 200;

std::string profile_head(std::uint32_t profile_size = 3 * chunk_size) {
    std::string bytes =
        big32(profile_size) + std::string(32, '\0') + "acsp" + std::string(88, '\0');
    bytes[8] = 2; // version
    bytes += big32(1) + "desc" + big32(chunk_size) + big32(100);
    bytes.resize(chunk_size, '.');
    return bytes;
}
std::string profile_name(const std::string& text) {
    std::string bytes = "desc" + big32(0) + big_size(text.size() + 1) + text;
    bytes.resize(chunk_size, '\0');
    return bytes;
}

TEST(IccChunks, AreTakenInTheOrderOfTheFile) {
    const std::string head = profile_head();
    const std::string whole = head + profile_name("One");
    const std::string two = profile_name("Two");
    const std::pair<std::string, const char*> cases[] = {
        {jpeg({profile_segment(1, 1, whole)}), "One"},
        {jpeg({profile_segment(1, 3, head), profile_segment(3, 3, profile_name("Three")),
               profile_segment(2, 3, two)}),
         "Three"},
        {jpeg({segment(App2, "MPF"), jpeg_exif("A"), profile_segment(1, 3, head),
               profile_segment(2, 3, two), profile_segment(3, 3, std::string(chunk_size, 'f'))}),
         "Two"},
        // No room is made for what is only announced.
        {jpeg({profile_segment(1, 2, profile_head(4'000'000'000)), profile_segment(2, 2, two)}),
         "Two"},
        // Beyond the announced size, without a first one, too short for a profile's header, cut.
        {jpeg({profile_segment(1, 2, profile_head(chunk_size)), profile_segment(2, 2, two)}),
         "!-2026"},
        {jpeg({profile_segment(2, 2, two)}), "!-2026"},
        {jpeg({profile_segment(1, 1, whole.substr(0, 127))}), "!-2026"},
        {"\xFF\xD8" + profile_segment(1, 1, whole).substr(0, 300), "!-302"},
    };
    for (const auto& [file, expected] : cases)
        EXPECT_EQ(metadata_of("-GetIccProfileName", file), expected);
}

TEST(IccChunks, AreToldOfInAVerboseDescription) {
    const std::string file =
        jpeg({profile_segment(1, 2, profile_head()), profile_segment(2, 2, profile_name("Two"))});
    for (const auto& [switches, verbose] :
         {std::pair("-GetIccProfileDescription -VerboseLevel=2", true),
          {"-GetIccProfileDescription", false},
          {"-GetIccProfileDescription -VerboseLevel=2 -Format=XML", false},
          {"-GetIccProfileName -VerboseLevel=2", false}})
        EXPECT_EQ(
            metadata_of(switches, file).starts_with("ICC chunk count: 2|ICC_MULTIPLE_chunks|"),
            verbose)
            << switches;
}

std::string text_chunk(const std::string& keyword, const std::string& text) {
    return png_chunk("tEXt", keyword + '\0' + text);
}
std::string xmp_chunk(const std::string& text, char compressed = 0, char method = 0,
                      const std::string& keyword = "XML:com.adobe.xmp") {
    return png_chunk("iTXt", keyword + '\0' + compressed + method + "de\0t\0"s + text);
}

TEST(PngChunks, GiveTagsTextsAndPackets) {
    const std::string exif = png_chunk("eXIf", exif_block("A"));
    const std::string image = png_chunk("IDAT", std::string(9000, 'i'));
    const std::string apple = png_chunk("CgBI", "abcd");
    const char* const texts = "-GetTextChunkFromPNG";
    const std::string signature = "\x89PNG\r\n\x1A\n";
    expect_metadata({
        {"GetExif GetXMP", png({image, exif, xmp_chunk(packet)}), tags},
        {"GetExif", png({exif, exif}), tags}, // one is to be there
        {"GetExif", signature + apple + png_chunk("IHDR", std::string(13, '\1')) + exif, tags},
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
        {"GetXMP", png({png_chunk("iTXt", "XML:com.adobe.xmp\0\0\0de\0"s)}), "!-302"},
        {"GetXMP", png({png_chunk("iTXt", "XML:com.adobe.xmp\0"s)}), "!-302"},
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

const std::string declared_utf8 = dataset(1, 90, "\x1B%G");
const std::string title = dataset(2, 5, "T");
const std::string read = tagged("IPTC 5=T");

TEST(Iptc, DatasetsBecomeTaggedText) {
    const std::string a_umlaut = dataset(2, 80, umlaut);
    const std::string native_umlaut = tagged("IPTC 80=<0:ä>");
    const struct {
        std::string block;
        std::string expected;
        TextEncoding source = TextEncoding::Native;
        bool detect_utf8 = true;
    } cases[] = {
        {"\x1C\x03\x05\0\1T\x1C\x1C"s, ""},
        {"junk\x1C\x1C" + title, read},
        {title + dataset(1, 0, "v") + title + "x" + title, read + read}, // up to what is none
        {title + dataset(3, 1, "x") + title, read},
        {dataset(2, 120, ""), tagged("IPTC 120=")},
        // The bytes of a number, swapped.
        {dataset(2, 0, "\0\2"s), tagged("IPTC 0=\2\0"s)},
        {dataset(2, 0, "v"), tagged("IPTC 0=v")},
        // Encodings.
        {a_umlaut, native_umlaut},
        {a_umlaut + dataset(2, 80, "\xE4"), tagged("IPTC 80=ä; IPTC 80=<0:\xE4>"),
         TextEncoding::Utf8},
        {declared_utf8 + a_umlaut, tagged("IPTC 80=ä"), TextEncoding::AsciiMac},
        {declared_utf8 + a_umlaut, tagged("IPTC 80=<4:ä>"), TextEncoding::AsciiMac, false},
        {dataset(1, 90, "\x1B%") + a_umlaut, native_umlaut},
        {dataset(2, 90, "\x1B%G") + a_umlaut, // another dataset
         tagged("IPTC 90=\x1B%G") + native_umlaut},
        // Cut off, and a length in the extended form.
        {title + dataset(2, 5, "TITLE").substr(0, 7), tagged("IPTC 5=T; IPTC 5=TI")},
        {title + dataset(2, 5, "TITLE").substr(0, 4), read},
        {title + "\x1C\x02\x05\x80\x04\0\0\0\1T"s, read},
    };
    for (const auto& [block, expected, source, detect_utf8] : cases) {
        MetadataText text;
        ASSERT_TRUE(decode_iptc(block, detect_utf8, source, text));
        EXPECT_EQ(shown(text), expected) << block;
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
    const auto tiff = [](std::uint16_t tag) {
        return tags_of(
            {undefined(tag, declared_utf8 + dataset(2, 5, umlaut)), ascii(271, "8BIM\4\4")});
    };
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
        // Of a TIFF file, in a tag.
        {"GetIPTC", tiff(33723), tagged("IPTC 5=ä")},
        {"GetIPTC", tiff(33724), "!-2026"},
        {"GetImageURL", tiff(1) + resource(0x040B, "u"), "u"},
    });

    // Wherever the window over the file ends.
    for (std::size_t before = 65'536 - 40; before < 65'536 + 2; ++before)
        EXPECT_EQ(metadata_of("GetIPTC", std::string(before, '8') + block), read) << before;
}

} // namespace
} // namespace vell::metadata::metadata_reading_test
