#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::test;

std::string exif(const std::string& make) {
    return exif_segment(build_tiff(ByteOrder::Little, {.first = {ascii(271, make)}}));
}
std::string comment(const std::string& text) {
    return segment(SegmentMarker::Com, text);
}
const std::string tags = tagged("EXIF 271=A");

TEST(JpegSegments, AreReadAsFarAsTheyAreWanted) {
    const std::string a = exif("A");
    const std::string c = comment("hi");
    const std::string app12 = segment(SegmentMarker::App12, "duck");
    expect_metadata({
        {"GetExif", jpeg({a, exif("B")}), tags}, // the first one only
        {"GetExif", jpeg({packet_segment("x"), a}), tags},
        {"GetExif", jpeg({c}), "!-2026"},
        {"GetExif GetXMP", jpeg({a, packet_segment("x")}), tags}, // tags before packets
        {"GetJPEGComment", jpeg({c, comment("2")}), "|##JCOM|hi|##END "},
        {"GetJPEGComment", jpeg({app12, c}), "|##JCOM|duck|##END |##JCOM|hi|##END "},
        {"GetJPEGComment", jpeg({app12}), "|##JCOM|duck|##END !-2026"},
        {"GetJPEGComment SourceMacCharset", jpeg({comment("\xE4")}), "|##JCOM|<4:\xE4>|##END "},
        {"GetExif GetJPEGComment", jpeg({c, comment("2"), a}), // two items
         "|##JCOM|hi|##END |##JCOM|2|##END "},
        // Fill bytes, bytes between segments, frame headers, markers without a segment.
        {"GetJPEGComment",
         jpeg({"junk", "\xFF\xFF\xFF", segment(SegmentMarker::Sof2, "frame\xFF\xFE"), "\xFF\xD0",
               c}),
         "|##JCOM|hi|##END "},
        {"GetJPEGComment", jpeg({std::string("\xFF\x00\x00\x06\xFF\xD9zz", 8), c}),
         "|##JCOM|hi|##END "}, // segments of markers that mean nothing are passed over too
        {"GetJPEGComment", jpeg({"\xFF\xD9", c}), "!-2026"},
        // Lengths that cannot be.
        {"GetJPEGComment", jpeg({segment(SegmentMarker::Com, "")}), "!-92"},
        {"GetExif", jpeg({segment(SegmentMarker::App1, "", 1)}), "!-92"},
        {"GetJPEGComment", jpeg({segment(SegmentMarker::App0, "", 0), c}), "|##JCOM|hi|##END "},
        {"GetJPEGComment", jpeg({segment(SegmentMarker::Com, "hi", 999)}), "!-302"},
        {"GetExif", jpeg({segment(SegmentMarker::App1, a.substr(4), 999)}), "!-302"},
        {"GetExif", jpeg({segment(SegmentMarker::App1, "Ex")}), "!-2026"},
        // Files that end early.
        {"GetJPEGComment", "\xFF\xD9", "!-71"},
        {"GetJPEGComment", std::string("\xFF\xD8\xFF\xFE\x00", 5), "!-39"},
        {"GetExif", "\xFF\xD8" + segment(SegmentMarker::Dqt, "q", 60'000), "!-39"},
        {"GetExif GetGPS", "\xFF\xD8" + a, tags},
    });
}

TEST(JpegSegments, XmpComesWithItsIdentifierAndAReadableHeader) {
    const std::string packet = "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W\"?>\xC3\xA4";
    expect_metadata({
        {"GetXMP -SourceUTF8Charset",
         jpeg({exif("A"), packet_segment(packet), packet_segment("2")}),
         "http://ns.adobe.com/xap/1.0/|<?xpacket begin=\"0xEFBBBF\" id=\"W\"?>\xC3\xA4"},
        {"GetXMP", jpeg({packet_segment(packet)}),
         "http://ns.adobe.com/xap/1.0/|<0:<?xpacket begin=\"0xEFBBBF\" id=\"W\"?>\xC3\xA4>"},
        // Without its end the identifier is all that there is.
        {"GetXMP", jpeg({segment(SegmentMarker::App1, "http://ns.adobe.com/x")}),
         "http://ns.adobe.com/x"},
        {"GetXMP", jpeg({exif("A")}), "!-2026"},
        // What agrees with the identifier up to some byte has been given by then.
        {"GetXMP", jpeg({segment(SegmentMarker::App1, "http://example"), packet_segment("p")}),
         "http://http://ns.adobe.com/xap/1.0/|p"},
        {"GetXMP", jpeg({}) + "...<?xpacket begin=''?><x/><?xpacket end='w'?>..",
         "<?xpacket begin=''?><x/><?xpacket end='w'?>"},
        // Cut off; no packet elsewhere either.
        {"GetXMP", jpeg({segment(SegmentMarker::App1, packet_segment("p").substr(4), 999)}),
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
    std::string bytes =
        "desc" + big32(0) + big32(static_cast<std::uint32_t>(text.size() + 1)) + text;
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
        {jpeg({segment(SegmentMarker::App2, "MPF"), exif("A"), profile_segment(1, 3, head),
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

TEST(JpegSegments, AreAllThatIsReadOfAFile) {
    const std::string head = jpeg({exif("A")});
    FakeSystem files;
    files.add(u"big", (head + std::string(1'000'000, 's')));
    const auto file = *files.open(native(u"big"), files::Permission::Read);
    EXPECT_EQ(metadata_of("GetExif GetGPS", *file), tags);
    EXPECT_LE(files.end_of_reading(), head.size() + files::BufferedReader::default_buffer);
}

} // namespace
} // namespace vell::metadata
