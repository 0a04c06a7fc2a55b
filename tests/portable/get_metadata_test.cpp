#include "src/metadata/get_metadata.h"

#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/metadata_cases.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <random>

namespace vell::metadata::get_metadata_test {
namespace {

using namespace vell::test;

const std::string packet = "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W\"?><x/><?xpacket end=\"w\"?>";
const std::string readable = "<?xpacket begin=\"0xEFBBBF\" id=\"W\"?><x/><?xpacket end=\"w\"?>";

TEST(MetadataRequest, FollowsTheSwitches) {
    const auto request = [](const char* switches) {
        return metadata_request_of(params::SwitchSet(switches)).value();
    };
    for (const char* refused : {"", "-Format=Decimal", "-SourceUTF8Charset",
                                "-GetRawExif GetGPS -Format=Decimal", "GetIccProfileName"})
        EXPECT_EQ(metadata_of(refused, ""), "!-50") << refused;
    const MetadataRequest raw = request("GetExif -GetRawExif -Format=Decimal");
    EXPECT_TRUE(raw.exif.want_exif && raw.exif.raw_values && !raw.exif.decimal_gps);
    EXPECT_TRUE(request("-getgps -format=decimal").exif.decimal_gps);
    EXPECT_TRUE(request("-GetTextChunkFromPNG").exif.want_exif);

    const auto source = [&](const std::string& switches) {
        return static_cast<int>(request(("GetIPTC" + switches).c_str()).source);
    };
    EXPECT_EQ(source("-SourceWinCharset"), 0);
    EXPECT_EQ(source("-Encoding=ISO_8859_1"), 5);
    EXPECT_EQ(source("-Encoding=ISO_8859_1 SourceMacCharset"), 4);
    EXPECT_EQ(source("SourceMacCharset SourceWinCharset -SourceUTF8Charset"), 1);

    const auto movie = [&](const char* switches) {
        return static_cast<int>(request(switches).movie.selector);
    };
    EXPECT_EQ(movie("-IsValidMovie -GetMovieCopyright"), 104);
    EXPECT_EQ(movie("-IsValidMovie -GetMovieBoxes -GetMovieDuration"), 4);
}

TEST(GetMetadata, TakesTheReaderThatFitsTheFile) {
    const auto tiff = [](ByteOrder order) {
        return tags_of(
            {ascii(271, "A"), bytes(700, packet + '\0'), undefined(33723, dataset(2, 5, "T"))},
            order);
    };
    const std::string exif = tagged("EXIF 271=A"), title = tagged("IPTC 5=T");
    const std::string no_packet = tags_of({ascii(271, "A")}, ByteOrder::Big);
    const std::string photoshop = "8BPS..." + resource(0x0404, dataset(2, 5, "T")) + packet;
    expect_metadata({
        {"GetExif", tiff(ByteOrder::Little), exif},
        {"GetIPTC GetExif GetGPS GetXMP", tiff(ByteOrder::Big), title + exif + readable},
        {"GetXMP", no_packet, "!-2026"},
        {"GetExif GetXMP", no_packet, exif},
        {"GetIPTC GetExif", no_packet, "!-2026"},
        {"GetJPEGComment", no_packet, "!-2026"},
        {"-GetIccProfileDescription", no_packet, "!-2026"},
        {"-GetIccProfileName GetXMP GetJPEGComment", no_packet, "!-2026"},
        {"-GetLocalizedIccProfileName GetXMP", tiff(ByteOrder::Big), readable},
        {"-GetIccProfileName GetJPEGComment GetExif", no_packet, exif},
        {"GetExif", "XX neither nor", "!-302"},
        {"GetJPEGComment", "XX neither nor", "!-71"},
        {"GetJPEGComment GetIPTC", photoshop, title + "!-71"},
        {"GetIPTC GetXMP", photoshop, title + readable},
        {"GetExif GetXMP", photoshop, readable}, // no tags, but a packet
        {"-GetImageDescription GetExif", "XX neither nor", "!-302"},
    });
}

TEST(XmpScan, TakesTheFirstWholePacket) {
    const std::string begin = "<?xpacket begin=''?>";
    const std::string end = "<?xpacket end='r'?>";
    const std::string unfinished = "<?xpacket ?><?xpacket end='r'" + std::string(1000, '\0');
    const std::pair<std::string, std::string> cases[] = {
        {"x" + packet + packet, readable},
        {end + begin + "late" + end, begin + "late" + end},
        {begin + "lost" + begin + "kept" + end, begin + "kept" + end},
        {begin + unfinished + end, begin + unfinished + end},
        {begin + "<?xpacket end='r'", "!-2026"},
        {begin + "\xE4" + end, "<0:" + begin + "\xE4" + end + ">"},
        {"<<<<?xpacket <?xpacke", "!-2026"},
    };
    for (const auto& [file, expected] : cases)
        EXPECT_EQ(metadata_of("GetXMP", file), expected) << file;
    const std::string far = std::string(65'536 - 5, ' ') + begin + std::string(600'000, 'x') + end;
    EXPECT_EQ(metadata_of("GetXMP", far), far.substr(65'536 - 5));
}

// Time is bounded by what is read: each byte once for each search through all of the file.
TEST(GetMetadata, ReadsLargeFilesOnceInLargePieces) {
    constexpr std::uint64_t size = 300'000'000;
    const std::string soi = "\xFF\xD8";
    const struct {
        const char* switches;
        std::string pattern;
        std::uint64_t size;
        std::uint64_t passes;
        const char* expected;
    } cases[] = {
        {"GetExif", std::string(1, '\0'), size, 1, "!-39"},
        {"GetIPTC -ParseAllApplicationRecords", "8", size / 10, 1, "!-2026"},
        {"GetXMP", "<", size / 100, 2, "!-2026"},
        {"GetXMP", "<?xpacket begin=''?>", size / 100, 2, "!-2026"},
        {"GetXMP", "<?xpacket end=''", size / 100, 2, "!-2026"},
        {"GetIPTC", resource(0x0404, ""), 2 + 12 * 300'000, 1, "!-2026"},
        {"GetImageURL", resource(0x040B, ""), 2 + 12 * 300'000, 1, "!-2026"},
        {"GetIPTC", resource(0x0404, "") + std::string("JFI\0", 4), size / 100, 1, "!-2026"},
        {"GetExif", "\xFF", size / 100, 1, "!-39"},
        {"GetExif", segment(SegmentMarker::Com, ""), size / 100, 1, "!-39"},
    };
    for (const auto& each : cases) {
        EndlessFile file(soi, each.pattern, each.size);
        EXPECT_EQ(metadata_of(each.switches, file), each.expected) << &each - cases;
        EXPECT_LE(file.bytes_read(), each.passes * each.size * 11 / 10) << &each - cases;
        EXPECT_LE(file.longest_read(), 1u << 20) << &each - cases;
    }
    // An Exif block at the front ends the reading, and so does the scan behind it.
    for (const char* switches : {"GetExif", "GetExif GetGPS"}) {
        EndlessFile file(jpeg({exif_segment(tags_of({ascii(271, "A")}))}), "s", size);
        EXPECT_EQ(metadata_of(switches, file), tagged("EXIF 271=A"));
        EXPECT_LE(file.bytes_read(), 10'000u);
    }
}

TEST(GetMetadata, GivesTextOrACode) {
    FakeSystem files;
    files.add(u"a.jpg", (jpeg({exif_segment(tags_of({ascii(271, "A\xE4")}))})));
    const auto result = [&](std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        const Result<void> done = get_metadata(call, files);
        EXPECT_EQ(done.has_value(), call.result().has_value());
        EXPECT_EQ(files.open_files(), 0);
        return done ? *call.result() : utf16_from_utf8(std::to_string(number(done.error())));
    };
    const std::pair<std::vector<std::u16string>, const char16_t*> cases[] = {
        {{u"GetExif", u"a.jpg"}, u"\r##EXIF 271\rA\xE4\r##END 271"},
        {{u"GetExif", u"b.jpg"}, u"-43"},
        {{u"GetExif"}, u"-50"},
        {{u"GetExif", u""}, u"-50"},
        {{u"", u"b.jpg"}, u"-50"}, // looked at before the file
        // Nothing of a result with a failure in it is given.
        {{u"GetExif -GetMovieBoxes", u"a.jpg"}, u"-2010"},
        {{u"-GetMovieDescription", u"a.jpg"}, u"-2010"},
        {{u"-GetPDFDescription", u"a.jpg"}, u"-208"}, // not a PDF file
        {{u"-GetMovieWidth", u"b.jpg"}, u"-43"},
        {{u"-IsValidMovie", u"a.jpg"}, u"0"},
        {{u"-IsValidMovie", u"b.jpg"}, u"0"},
        {{u"-IsValidMovie"}, u"0"},
    };
    for (const auto& [parameters, expected] : cases)
        EXPECT_EQ(result(parameters), expected) << utf8_from_utf16(parameters[0]);

    files.fail(0, ErrorCode::Ok);
    result({u"GetIPTC GetExif GetXMP", u"a.jpg"});
    const int operations = files.operations();
    ASSERT_GE(operations, 4);
    for (int operation = 1; operation <= operations; ++operation) {
        files.fail(operation, ErrorCode::DiskError);
        EXPECT_EQ(result({u"GetExif", u"a.jpg"}).substr(0, 1), operation < 5 ? u"-" : u"\r")
            << operation;
    }
}

// Real files with every switch: sound ones, cut off, and with bytes changed. Whatever they are, the
// answer is a text or a code, and memory stays in proportion.
TEST(GetMetadata, SurvivesRealFilesAndWhatIsLeftOfThem) {
    const auto files = real_files({"jpeg", "tiff", "png", "raw", "icc", "psd", "movie", "other"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    constexpr const char* all_switches[] = {
        "GetIPTC",
        "GetIPTC -ParseAllApplicationRecords -SourceUTF8Charset",
        "GetExif GetGPS",
        "-GetRawExif -SourceUTF8Charset",
        "GetGPS -Format=Decimal",
        "GetXMP",
        "GetJPEGComment",
        "GetImageURL",
        "-GetTextChunkFromPNG",
        "-GetImageDescription",
        "-GetIccProfileName",
        "-GetIccProfileDescription -VerboseLevel=2",
        "-GetIccProfileDescription -Format=XML",
        "-GetLocalizedIccProfileName",
        "GetExif GetXMP GetGPS GetJPEGComment -GetIccProfileName"};
    std::minstd_rand random(4260);
    std::size_t answers = 0;
    const auto ask_everything = [&](const std::string& bytes) {
        for (const char* switches : all_switches) {
            const std::string text = metadata_of(switches, bytes);
            EXPECT_LE(text.size(), 40 * bytes.size() + 100'000) << switches;
            answers += text.find('!') != 0;
        }
    };
    for (const auto& path : files) {
        std::string bytes = bytes_of(path);
        ask_everything(bytes);
        bytes.resize(std::min<std::size_t>(bytes.size(), 100'000));
        for (std::size_t part = 0; part < 50; ++part) // more of them near the start
            metadata_of(all_switches[part % std::size(all_switches)],
                        bytes.substr(0, bytes.size() * part * part / 2500));
        for (int round = 0; round < 20; ++round) {
            std::string changed = bytes;
            for (int change = 0; change < 10 && !changed.empty(); ++change)
                changed[random() % std::min<std::size_t>(changed.size(), 4000)] =
                    static_cast<char>(random());
            metadata_of(all_switches[random() % std::size(all_switches)], changed);
        }
    }
    EXPECT_GT(files.size(), 80u);
    EXPECT_GT(answers, 3 * files.size()); // most files have something to tell
}

} // namespace
} // namespace vell::metadata::get_metadata_test
