#include "src/metadata/set_metadata.h"

#include "tests/portable/fake_call.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"
#include "tests/portable/writable_files.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::testing;

const std::string frame = segment(SegmentMarker::Sof0, "frame") + "\xFF\xDAscan\xFF\xD9";
const std::string soi = "\xFF\xD8";
const std::string plain = soi + segment(SegmentMarker::App0, "JFIF") + frame;
const std::u16string source = u"C:\\a.jpg";
const std::u16string destination = u"C:\\b.jpg";

// The code of a write, as from `source` to `target`.
std::int32_t set(WritableFiles& files, const std::u16string& target, std::string_view switches,
                 std::string_view text) {
    FakeCall call({utf16_from_utf8(switches), source, target, utf16_from_utf8(text)});
    const Result<void> done = set_metadata(call, files);
    EXPECT_EQ(call.result() == u"0", done.has_value());
    return done ? 0 : number(done.error());
}

// The file after a write that succeeds; "!" and the code otherwise.
std::string written(const std::string& file, std::string_view switches, std::string_view text) {
    WritableFiles files;
    files.add(source, file);
    const std::int32_t code = set(files, destination, switches, text);
    EXPECT_EQ(files.at(source), file);
    EXPECT_EQ(files.contents().size(), code == 0 ? 2U : 1U);
    return code == 0 ? files.at(destination) : "!" + std::to_string(code);
}

// What stands between JFIF and the frame.
std::string added(std::string_view switches, std::string_view text, const std::string& old = "") {
    const std::string start = plain.substr(0, plain.size() - frame.size());
    const std::string file = written(start + old + frame, switches, text);
    if (!file.starts_with(start) || !file.ends_with(frame))
        return file;
    return file.substr(start.size(), file.size() - start.size() - frame.size());
}

std::string photoshop(const std::string& resources) {
    return segment(SegmentMarker::App13, std::string("Photoshop 3.0\0", 14) + resources);
}

TEST(SetMetadata, TakesOneTargetAndAnyComment) {
    // The text is no tagged one, which comments are not asked to be.
    for (const char* taken : {"-SetIPTC -SetExif -SetJPEGComment", "-setimageurl", "-SetXMP",
                              "JPEGComment", "-SetJPEGComment -SetExif"})
        EXPECT_TRUE(written(plain, taken, "text").starts_with(soi)) << taken;
    for (const char* refused :
         {"", "-SetIPTC -SetExif", "SetExif", "-UTF8Charset", "-SetExif", "-SetIPTC"})
        EXPECT_EQ(written(plain, refused, "text"), "!-50") << refused;
    for (const char* unknown : {"-SetTitle", "-SetGPS -SetExif", "-SetWithXML JPEGComment",
                                "-SetDescription", "-SetCreationDate"})
        EXPECT_EQ(written(plain, unknown, "text"), "!-4243") << unknown;
}

TEST(SetMetadata, WritesComments) {
    const auto com = [](const std::string& text) {
        return segment(SegmentMarker::Com, text);
    };
    const std::string old = com("one") + com("two");
    EXPECT_EQ(added("JPEGComment", "caf\xC3\xA9", old), com("caf\xE9"));
    EXPECT_EQ(added("JPEGComment", "", old), "");
    EXPECT_EQ(added("JPEGComment", "\r##JCOM\rone\r##END \r##JCOM\rtwo\r##END "), com("two"));
    // A character that would be cut is left out.
    const std::string most(1999, 'x');
    EXPECT_EQ(added("JPEGComment -UTF8Charset", most + "\xC3\xA9yz"), com(most));
    EXPECT_EQ(added("JPEGComment", most + "\xC3\xA9yz"), com(most + "\xE9"));
    EXPECT_EQ(added("JPEGComment", most + "abc" + std::string(1'000'000, 'y')), com(most + "a"));
}

TEST(SetMetadata, WritesIptcBesideTheOtherResources) {
    const auto even = [](std::string bytes) {
        bytes.append(bytes.size() % 2, '\0');
        return bytes;
    };
    const auto iptc = [&](const std::string& datasets) {
        return even(resource(0x0404, datasets));
    };
    const std::string version = dataset(2, 0, std::string("\0\4", 2));
    const std::string utf8 = dataset(1, 90, "\x1B%G");
    EXPECT_EQ(added("-SetIPTC", "\r##IPTC 25\rone\r##END 25\r##IPTC 25\rtwo\r##END 25"),
              photoshop(iptc(version + dataset(2, 25, "one") + dataset(2, 25, "two"))));
    const std::string odd = added("-SetIPTC", "##IPTC 5\n1234\n##END 5\n##IPTC 7\r\n\r\n##END 7");
    EXPECT_EQ(odd, photoshop(iptc(version + dataset(2, 5, "1234") + dataset(2, 7, ""))));
    EXPECT_EQ(added("-SetIPTC", "##IPTC 5\n123\n##END 5").substr(2, 2), big16(7 + 8 + 28 + 1));
    EXPECT_EQ(added("-SetIPTC", "##IPTC 0\n2\n##END 0"),
              photoshop(iptc(dataset(2, 0, std::string("\0\2", 2)))));

    const std::string name = "##IPTC 5\n\xC3\xA9\n##END 5";
    EXPECT_EQ(added("-SetIPTC", "##IPTC 5\n\xE6\x97\xA5\n##END 5"),
              photoshop(iptc(utf8 + version + dataset(2, 5, "\xE6\x97\xA5"))));

    // Other resources, records and segments stay; a resource that goes on elsewhere comes last.
    const std::string before = resource(0x03ED, "resolution", "name");
    const std::string behind = resource(0x0425, "digest!!") + resource(0x0404, "goes on", "", 1000);
    const std::string envelope = dataset(1, 5, "to");
    const std::string old_version = dataset(2, 0, std::string("\0\2", 2));
    const std::string pictures = dataset(3, 10, "ppp");
    const auto file = [&](const std::string& datasets) {
        return photoshop(before + iptc(datasets) + behind) + photoshop(iptc(version));
    };
    const std::string old = file(envelope + utf8 + old_version + dataset(2, 5, "o") + pictures);
    EXPECT_EQ(added("-SetIPTC", name, old),
              file(envelope + utf8 + old_version + dataset(2, 5, "\xC3\xA9") + pictures));
    EXPECT_EQ(added("-SetIPTC -DontUseAutoUTF8Detection -WinCharset", name, old),
              file(envelope + utf8 + old_version + dataset(2, 5, "\xE9") + pictures));
    EXPECT_EQ(added("-SetIPTC -WinCharset", name, old),
              file(envelope + old_version + dataset(2, 5, "\xE9") + pictures));
    EXPECT_EQ(added("-SetIPTC", "", photoshop(iptc(version))), "");

    EXPECT_EQ(added("-SetImageURL", "http://x/", photoshop(before)),
              photoshop(before + even(resource(0x040B, "http://x/"))));
    EXPECT_EQ(added("-SetIPTC", "##IPTC 5\n" + std::string(32'768, 'x') + "\n##END 5"), "!-207");
}

TEST(SetMetadata, WritesPacketsWithTheirPadding) {
    const std::string identifier("http://ns.adobe.com/xap/1.0/\0", 29);
    const std::string begin =
        "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n";
    const std::string end = "<?xpacket end=\"w\"?>";
    const std::string body = "<x:xmpmeta>\xC3\xA9</x:xmpmeta>";
    const std::string packet = added("-SetXMP", "<?xml version=\"1.0\"?>\r" + body);
    ASSERT_TRUE(packet.ends_with(end));
    const std::string start = identifier + begin + body + "\n";
    ASSERT_EQ(packet.substr(4, start.size()), start);
    const std::string room =
        packet.substr(4 + start.size(), packet.size() - 4 - start.size() - end.size());
    EXPECT_EQ(room.size(), 2048U);
    EXPECT_EQ(room.find_first_not_of(" \n"), std::string::npos);
    // A packet as it was read, in each encoding, goes back.
    const std::string old = segment(SegmentMarker::App1, identifier + begin + body + end);
    const std::string exif = exif_segment("II*\0");
    for (const auto& [get, set_switches] :
         {std::pair{"GetXMP", "-SetXMP"}, {"GetXMP -SourceUTF8Charset", "-SetXMP -UTF8Charset"}}) {
        WritableFiles files;
        files.add(source, soi + exif + old + old + frame);
        FakeCall call({utf16_from_utf8(get), source});
        ASSERT_TRUE(get_metadata(call, files));
        const std::string text = utf8_from_utf16(*call.result());
        EXPECT_NE(text.find("0xEFBBBF"), std::string::npos);
        EXPECT_EQ(added(set_switches, text, exif + old + old), exif + old + old);
        EXPECT_EQ(added(set_switches, text), old);
    }
    EXPECT_EQ(added("-SetXMP", "", old), "");
    // The padding gives way to what must fit.
    const std::size_t most = 65'533 - identifier.size() - begin.size() - 1 - end.size();
    EXPECT_EQ(added("-SetXMP", std::string(most, 'x')).size(), 2 + 65'535U);
    EXPECT_EQ(added("-SetXMP", std::string(most + 1, 'x')), "!-207");
}

TEST(SetMetadata, RefusesBeforeAnythingIsMade) {
    const std::string long_value = std::string(70'000, 'x');
    EXPECT_EQ(written(plain, "-SetExif", "##EXIF 270\r" + long_value + "\r##END 270"), "!-207");
    EXPECT_EQ(written(plain, "-SetImageURL", long_value), "!-207");
    EXPECT_EQ(written("GIF89a", "-SetExif", ""), "!-71");
    EXPECT_EQ(written(soi + "\xFF\xDA", "-SetExif", ""), "!-4247");
    EXPECT_EQ(written(plain, "-SetExif", "##EXIF 9\rx\r##END 9"), "!-50");
    EXPECT_EQ(written(plain, "-SetExif", ""), plain);

    WritableFiles files;
    files.add(source, plain);
    files.add(destination, "there");
    EXPECT_EQ(set(files, destination, "-SetXMP", "<x/>"), -48);
    EXPECT_EQ(files.at(destination), "there");
    EXPECT_EQ(set(files, u"C:\\c.jpg.", "-SetXMP", "<x/>"), -37);
    FakeCall missing({u"-SetXMP", u"C:\\none.jpg", destination, u"<x/>"});
    EXPECT_EQ(set_metadata(missing, files).error(), ErrorCode::NotFound);
    FakeCall three({u"-SetXMP", source, destination});
    EXPECT_EQ(set_metadata(three, files).error(), ErrorCode::BadParameter);
}

TEST(SetMetadata, StepsNameTheTargetAndTheEncoding) {
    const auto result = [](std::int32_t action, std::int32_t encoding) {
        WritableFiles files;
        files.add(source, plain);
        FakeCall call({u"", source, u"", u"", u"caf\u00E9", u""});
        call.set_step_option(3, action);
        call.set_step_option(5, encoding);
        const Result<void> done = set_metadata(call, files);
        return done ? files.at(source) : "!" + std::to_string(number(done.error()));
    };
    const auto comment = [](const std::string& text) {
        return std::string(plain).insert(plain.size() - frame.size(),
                                         segment(SegmentMarker::Com, text));
    };
    EXPECT_EQ(result(4, 0), comment("caf\xE9"));
    EXPECT_EQ(result(4, 1), comment("caf\xC3\xA9"));
    EXPECT_NE(result(2, 0).find("<?xpacket"), std::string::npos);
    EXPECT_NE(result(3, 0).find("8BIM\4\v"), std::string::npos);
    for (const std::int32_t refused : {0, 1, 5, -1, params::Call::not_given}) // no tagged text
        EXPECT_EQ(result(refused, 0), "!-50") << refused;
}

// Whatever fails: the old contents, the new ones or the temporary copy are there.
TEST(SetMetadata, NoFailureLosesTheFile) {
    const std::string file =
        soi + exif_segment(build_tiff(ByteOrder::Big, {.first = {ascii(271, "Vell")}})) +
        segment(SegmentMarker::Com, "old") + frame + std::string(200'000, 'y');
    for (const auto& [switches, text] :
         {std::pair{"-SetExif", "##EXIF 272\rOne\r##END 272"}, {"JPEGComment", "new"}}) {
        const std::string expected = written(file, switches, text);
        ASSERT_TRUE(expected.ends_with("yyy"));
        for (const std::u16string& target : {std::u16string(), source, destination}) {
            const bool in_place = target != destination;
            int operations = 1;
            for (int operation = 1; operation <= operations; ++operation) {
                WritableFiles files;
                files.add(source, file);
                EXPECT_EQ(set(files, target, switches, text), 0);
                EXPECT_EQ(files.at(in_place ? source : destination), expected);
                EXPECT_EQ(files.contents().size(), in_place ? 1U : 2U);
                operations = files.operations();

                WritableFiles failing;
                failing.add(source, file);
                failing.fail(operation, ErrorCode::DiskError);
                EXPECT_EQ(set(failing, target, switches, text), -80) << operation;
                EXPECT_EQ(failing.open_files(), 0);
                EXPECT_TRUE(failing.has_contents(file) || failing.has_contents(expected));
                if (!in_place) {
                    EXPECT_EQ(failing.at(source), file);
                }
            }
            EXPECT_GT(operations, 10);
        }
    }
}

// The metadata of real files, read and written back: they read the same, and nothing else has
// changed.
TEST(SetMetadata, WhatWasReadFromRealFilesReadsTheSameAgain) {
    const auto real = real_files({"jpeg"});
    if (real.empty())
        GTEST_SKIP() << no_real_files;
    constexpr std::pair<const char*, const char*> pairs[] = {
        {"GetExif GetGPS", "-SetExif"},
        {"-GetRawExif GetGPS -SourceUTF8Charset", "-SetExif -UTF8Charset"},
        {"GetExif GetGPS -Format=Decimal", "-SetExif -AddExifMakerNote"},
        {"GetExif -SourceUTF8Charset", "-SetExif -UTF8Charset"},
        {"GetIPTC", "-SetIPTC"},
        {"GetIPTC -SourceUTF8Charset", "-SetIPTC -UTF8Charset"},
        {"GetXMP", "-SetXMP"},
        {"GetXMP -SourceUTF8Charset", "-SetXMP -UTF8Charset"},
        {"GetImageURL", "-SetImageURL"},
        {"GetJPEGComment", "JPEGComment"}};
    int trips = 0;
    for (const auto& real_path : real) {
        const std::string bytes = bytes_of(real_path);
        for (const auto& [getting, setting] : pairs) {
            SCOPED_TRACE(real_path.string() + " " + getting);
            WritableFiles files;
            files.add(source, bytes);
            const auto read = [&, get = utf16_from_utf8(getting)](const std::u16string& path) {
                FakeCall call({get, path});
                return get_metadata(call, files) ? utf8_from_utf16(*call.result()) : "";
            };
            const std::string text = read(source);
            if (text.empty())
                continue;
            ASSERT_EQ(set(files, destination, setting, text), 0);
            ASSERT_EQ(read(destination), text);
            const std::string result = files.at(destination);
            const auto [differs, at] = std::ranges::mismatch(bytes, result);
            const auto same_start = static_cast<std::size_t>(differs - bytes.begin());
            // One segment is the only difference: what it replaces ends no later than the frame.
            const auto [from_end, other_end] = std::mismatch(
                bytes.rbegin(), bytes.rend() - static_cast<std::ptrdiff_t>(same_start),
                result.rbegin(), result.rend());
            EXPECT_LE(bytes.rend() - from_end, static_cast<std::ptrdiff_t>(same_start) + 65'537);
            ++trips;
        }
    }
    EXPECT_GT(trips, 200);
}

} // namespace
} // namespace vell::metadata
