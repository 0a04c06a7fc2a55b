#include "tests/portable/image_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"
#include "tests/portable/written_file.h"

#include <gtest/gtest.h>

namespace vell::metadata::set_metadata_test {
namespace {

using namespace vell::test;
using enum SegmentMarker;

std::string com(const std::string& text) {
    return segment(Com, text);
}
const std::string frame = segment(Sof0, "frame") + "\xFF\xDAscan\xFF\xD9";
const std::string soi = "\xFF\xD8";
const std::string plain = soi + segment(App0, "JFIF") + frame;
// What stands between JFIF and the frame.
std::string added(std::string_view switches, std::string_view text, const std::string& old = "") {
    const std::string start = plain.substr(0, plain.size() - frame.size());
    const std::string file = written(start + old + frame, switches, text);
    if (!file.starts_with(start) || !file.ends_with(frame))
        return file;
    return file.substr(start.size(), file.size() - start.size() - frame.size());
}

// What the switches read of a file; nothing after a failure.
std::string metadata_text(FakeSystem& files, std::string_view switches,
                          const std::u16string& path) {
    FakeCall call({utf16_from_utf8(switches), path});
    return get_metadata(call, files) ? utf8_from_utf16(*call.result()) : "";
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

std::string even_resource(std::uint16_t id, const std::string& data) {
    const std::string bytes = resource(id, data);
    return bytes + std::string(bytes.size() % 2, '\0');
}
std::string iptc(std::initializer_list<std::string> datasets) {
    std::string bytes;
    for (const std::string& each : datasets)
        bytes += each;
    return even_resource(0x0404, bytes);
}
std::string iptc_segment(std::initializer_list<std::string> datasets) {
    return photoshop(iptc(datasets));
}
const std::string version = dataset(2, 0, std::string("\0\4", 2));
const std::string old_version = dataset(2, 0, std::string("\0\2", 2));
const std::string utf8 = dataset(1, 90, "\x1B%G");

TEST(SetMetadata, WritesIptcBesideTheOtherResources) {
    const std::pair<std::string, std::string> cases[] = {
        {"\r##IPTC 25\rone\r##END 25\r##IPTC 25\rtwo\r##END 25",
         iptc({version, dataset(2, 25, "one"), dataset(2, 25, "two")})},
        {"##IPTC 5\n1234\n##END 5\n##IPTC 7\r\n\r\n##END 7",
         iptc({version, dataset(2, 5, "1234"), dataset(2, 7, "")})},
        {"##IPTC 0\n2\n##END 0", iptc({old_version})},
        {"##IPTC 5\n\xE6\x97\xA5\n##END 5", iptc({utf8, version, dataset(2, 5, "\xE6\x97\xA5")})},
    };
    for (const auto& [text, resources] : cases)
        EXPECT_EQ(added("-SetIPTC", text), photoshop(resources)) << text;
    EXPECT_EQ(added("-SetIPTC", "##IPTC 5\n123\n##END 5").substr(2, 2), big16(7 + 8 + 28 + 1));

    const std::string name = "##IPTC 5\n\xC3\xA9\n##END 5";
    // Other resources, records and segments stay; a resource that goes on elsewhere comes last.
    const std::string before = resource(0x03ED, "resolution", "name");
    const std::string behind = resource(0x0425, "digest!!") + resource(0x0404, "goes on", "", 1000);
    const std::string envelope = dataset(1, 5, "to");
    const std::string pictures = dataset(3, 10, "ppp");
    const auto file = [&](const std::string& title, const std::string& declared) {
        const std::string datasets = iptc({envelope, declared, old_version, title, pictures});
        return photoshop(before + datasets + behind) + iptc_segment({version});
    };
    const std::string old = file(dataset(2, 5, "o"), utf8);
    EXPECT_EQ(added("-SetIPTC", name, old), file(dataset(2, 5, "\xC3\xA9"), utf8));
    EXPECT_EQ(added("-SetIPTC -DontUseAutoUTF8Detection -WinCharset", name, old),
              file(dataset(2, 5, "\xE9"), utf8));
    EXPECT_EQ(added("-SetIPTC -WinCharset", name, old), file(dataset(2, 5, "\xE9"), ""));
    EXPECT_EQ(added("-SetIPTC", "", iptc_segment({version})), "");

    EXPECT_EQ(added("-SetImageURL", "http://x/", photoshop(before)),
              photoshop(before + even_resource(0x040B, "http://x/")));
    EXPECT_EQ(added("-SetIPTC", "##IPTC 5\n" + std::string(32'768, 'x') + "\n##END 5"), "!-207");
    // What is written can be read: 16,384 bytes from the resource's signature on.
    const auto caption = [](std::size_t size) {
        return "##IPTC 120\n" + std::string(size, 'x') + "\n##END 120";
    };
    const std::size_t most = 16'384 - 12 - version.size() - 5;
    const std::string longest = written(plain, "-SetIPTC", caption(most));
    EXPECT_TRUE(has(metadata_of("GetIPTC", longest), std::string(most, 'x') + "|##END 120"));
    EXPECT_EQ(written(plain, "-SetIPTC", caption(most + 1)), "!-207");
    const std::string url(16'384 - 12, 'u');
    EXPECT_EQ(metadata_of("GetImageURL", written(plain, "-SetImageURL", url)), url);
    EXPECT_EQ(written(plain, "-SetImageURL", url + "u"), "!-207");
}

TEST(SetMetadata, MergesIptcByTheNumbersOfItsDatasets) {
    const auto one = [](const std::string& value) {
        return dataset(2, 25, value);
    };
    const std::string rights = dataset(2, 116, "me");
    const std::string title = dataset(2, 5, "\xFC");
    const std::string old =
        iptc_segment({old_version, title, one("a"), rights, one("b"), one("c")});
    const auto merged = [](std::string_view text, const std::string& existing,
                           const std::string& switches = "") {
        return added("-SetIPTC -keepotherdatasets " + switches, text, existing);
    };
    EXPECT_EQ(merged("##IPTC 120\nText\n##END 120", old),
              iptc_segment({old_version, title, one("a"), rights, one("b"), one("c"),
                            dataset(2, 120, "Text")}));
    EXPECT_EQ(merged("##IPTC 25\nx\n##END 25\n##IPTC 116\n\n##END 116", old),
              iptc_segment({old_version, title, one("x")}));
    const std::string keywords = "##IPTC 25\nx\n##END 25\n##IPTC 25\ny\n##END 25";
    EXPECT_EQ(merged(keywords, iptc_segment({rights, one("a")})),
              iptc_segment({version, rights, one("x"), one("y")}));
    EXPECT_EQ(merged(keywords, ""), iptc_segment({version, one("x"), one("y")}));
    EXPECT_EQ(merged("##IPTC 25\n\n##END 25", iptc_segment({old_version, one("a"), rights}),
                     "-UTF8Charset"),
              iptc_segment({utf8, old_version, rights}));
    // What stays is not made unreadable.
    const std::string foreign = "##IPTC 120\n\xE6\x97\xA5\n##END 120";
    const std::string umlaut = dataset(2, 5, "\xC3\xBC");
    const std::string declared = iptc_segment({utf8, old_version, umlaut});
    EXPECT_EQ(merged(foreign, declared),
              iptc_segment({utf8, old_version, umlaut, dataset(2, 120, "\xE6\x97\xA5")}));
    EXPECT_EQ(merged(foreign, old), "!-50");
    EXPECT_EQ(merged("##IPTC 120\nx\n##END 120", declared, "-WinCharset"), "!-50");
}

const std::string identifier("http://ns.adobe.com/xap/1.0/\0", 29);
std::string xmp_segment(const std::string& packet) {
    return segment(App1, identifier + packet);
}

TEST(SetMetadata, WritesPacketsWithTheirPadding) {
    const std::string body = "<x:xmpmeta>\xC3\xA9</x:xmpmeta>";
    const std::string packet = added("-SetXMP", "<?xml version=\"1.0\"?>\r" + body);
    ASSERT_TRUE(packet.ends_with(packet_end));
    const std::string start = identifier + packet_begin + body + "\n";
    ASSERT_EQ(packet.substr(4, start.size()), start);
    const std::string room =
        packet.substr(4 + start.size(), packet.size() - 4 - start.size() - packet_end.size());
    EXPECT_EQ(room.size(), 2048U);
    EXPECT_EQ(room.find_first_not_of(" \n"), std::string::npos);
    // A packet as it was read, in each encoding, goes back.
    const std::string old = xmp_segment(packet_begin + body + packet_end);
    const std::string exif = exif_segment({"II*\0", 4});
    for (const auto& [get, set_switches] :
         {std::pair{"GetXMP", "-SetXMP"}, {"GetXMP -SourceUTF8Charset", "-SetXMP -UTF8Charset"}}) {
        FakeSystem files;
        files.add(source, soi + exif + old + old + frame);
        const std::string text = metadata_text(files, get, source);
        EXPECT_TRUE(has(text, "0xEFBBBF"));
        EXPECT_EQ(added(set_switches, text, exif + old + old), exif + old + old);
        EXPECT_EQ(added(set_switches, text), old);
    }
    // The one behind the frame header is found, too. An empty text removes all XMP.
    const std::string other = xmp_segment("other");
    const std::string scan = frame.substr(4 + 5);
    const std::string head = plain.substr(0, plain.size() - scan.size());
    EXPECT_EQ(written(head + other + scan, "-SetXMP", body), head + packet + scan);
    const std::string extension =
        segment(App1, std::string("http://ns.adobe.com/xmp/extension/\0", 35) + "x");
    EXPECT_EQ(
        written(soi + exif + extension + old + head.substr(2) + other + scan, "-SetXMP", " \n"),
        soi + exif + head.substr(2) + scan);
    // The padding gives way to what must fit.
    const std::size_t most =
        65'533 - identifier.size() - packet_begin.size() - 1 - packet_end.size();
    EXPECT_EQ(added("-SetXMP", std::string(most, 'x')).size(), 2 + 65'535U);
    EXPECT_EQ(added("-SetXMP", std::string(most + 1, 'x')), "!-207");
}

TEST(SetMetadata, SaysWhenThereIsNothingToRemove) {
    const struct {
        const char* switches;
        const char* text;
        std::string there; // what the text removes
        std::string left = {};
    } cases[] = {
        {"-SetXMP", "", xmp_segment("")},
        {"JPEGComment", "", com("x")},
        {"-SetIPTC", "##EXIF 271\nVell\n##END 271", photoshop(resource(0x0404, "\x1C\2"))},
        {"-SetIPTC -KeepOtherDatasets", "##IPTC 5\n\n##END 5",
         photoshop(resource(0x0404, dataset(2, 5, "x")))},
        {"-SetImageURL", "", photoshop(resource(0x0425, "digest!!") + resource(0x040B, "url!")),
         photoshop(resource(0x0425, "digest!!"))},
        {"-SetExif", "##EXIF 271\n\n##END 271",
         exif_segment(build_tiff(ByteOrder::Big, {.first = {ascii(271, "V")}})),
         exif_segment(std::string("MM\0*\0\0\0\10\0\0\0\0\0\0", 14))},
        {"-SetExif", "",
         exif_segment(build_tiff(ByteOrder::Big, {.first = {undefined(37500, "V")}})),
         exif_segment(std::string("MM\0*\0\0\0\10\0\0\0\0\0\0", 14))},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(added(c.switches, c.text, c.there), c.left) << c.switches;
        EXPECT_EQ(added(c.switches, c.text, c.left), "!-2026") << c.switches;
    }
}

// A file of three pictures, the index of which stands among other segments (CIPA DC-007).
struct Pictures {
    ByteOrder order;
    std::string before; // the index
    std::string behind;

    static constexpr std::string_view second = "\xFF\xD8second\xFF\xD9";
    static constexpr std::string_view third = "\xFF\xD8the third one\xFF\xD9";

    std::string file() const {
        const std::string first = with_list(std::string(48, '\0'));
        const std::size_t header = first.find("MPF") + 4;
        std::string list;
        const std::size_t end = first.size() + 3; // with a gap
        const auto add = [&](std::size_t size, std::size_t offset) {
            for (const std::size_t number : {std::size_t{0}, size, offset, std::size_t{0}})
                append_integer<std::uint32_t>(list, static_cast<std::uint32_t>(number), order);
        };
        add(first.size(), 0);
        add(second.size(), end - header);
        add(third.size(), end + second.size() - header);
        return with_list(list) + "gap" + std::string(second) + std::string(third);
    }
    std::string with_list(const std::string& list) const {
        const std::string block =
            build_tiff(order, {.first = {{0xB001, FieldType::Long, {3}}, undefined(0xB002, list)}});
        return soi + before + segment(App2, std::string("MPF\0", 4) + block) + behind +
               "\xFF\xDAscan\xFF\xD9";
    }
    // Each picture as the index of a file tells it.
    std::vector<std::string> in(const std::string& file) const {
        const std::size_t header = file.find("MPF") + 4;
        const std::size_t list = header + 8 + 2 + 2 * 12 + 4;
        std::vector<std::string> pictures;
        for (std::size_t at = list; at < list + 48; at += 16) {
            const std::uint32_t offset = *load<std::uint32_t>(file, at + 8, order);
            const std::uint32_t size = *load<std::uint32_t>(file, at + 4, order);
            const std::size_t start = offset == 0 ? 0 : header + offset;
            pictures.push_back(start > file.size() ? "beyond" : file.substr(start, size));
        }
        return pictures;
    }
};

TEST(SetMetadata, PicturesBehindTheFirstAreFoundAfterEveryWrite) {
    const std::string exif =
        exif_segment(build_tiff(ByteOrder::Little, {.first = {ascii(270, "a description")},
                                                    .exif = {undefined(37500, "mm")}}));
    const std::string others =
        com("one") + exif + com("two") + photoshop(resource(0x0404, dataset(2, 5, "x")));
    const std::string head = segment(Sof0, "frame");
    const std::string late = xmp_segment("packet");
    const std::string long_text(500, 'x');
    const std::pair<const char*, std::string> writes[] = {
        {"JPEGComment", "a new comment"},
        {"JPEGComment", ""},
        {"-SetExif", "##EXIF 270\n" + long_text + "\n##END 270"},
        {"-SetExif", "##EXIF 270\n\n##END 270"},
        {"-SetXMP", long_text},
        {"-SetXMP", ""},
        {"-SetIPTC", "##IPTC 120\n" + long_text + "\n##END 120"},
        {"-SetIPTC", ""},
        {"-SetImageURL", long_text},
    };
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big})
        for (const Pictures& pictures :
             {Pictures{order, others, head + late}, Pictures{order, "", others + head + late},
              Pictures{order, others + head + late, ""}})
            for (const auto& [switches, text] : writes) {
                const std::string file = pictures.file();
                FakeSystem in_place;
                in_place.add(source, file);
                ASSERT_EQ(set(in_place, u"", switches, text), 0) << switches;
                const std::string after = written(file, switches, text);
                EXPECT_EQ(in_place.at(source), after);
                const std::string first = after.substr(0, after.find("gap"));
                EXPECT_EQ(pictures.in(after),
                          (std::vector<std::string>{first, std::string(Pictures::second),
                                                    std::string(Pictures::third)}))
                    << switches << text.size();
                EXPECT_NE(after.size(), file.size());
            }
}

TEST(SetMetadata, RefusesBeforeAnythingIsMade) {
    const std::string long_value = std::string(70'000, 'x');
    EXPECT_EQ(written(plain, "-SetExif", "##EXIF 270\r" + long_value + "\r##END 270"), "!-207");
    EXPECT_EQ(written(plain, "-SetImageURL", long_value), "!-207");
    EXPECT_EQ(written("GIF89a", "-SetExif", ""), "!-71");
    EXPECT_EQ(written(soi + "\xFF\xDA", "-SetExif", ""), "!-4247");
    EXPECT_EQ(written(plain, "-SetExif", "##EXIF 9\rx\r##END 9"), "!-50");

    FakeSystem files;
    files.add(source, plain);
    files.add(destination, "there");
    EXPECT_EQ(set(files, destination, "-SetXMP", "<x/>"), -48);
    EXPECT_EQ(files.at(destination), "there");
    EXPECT_EQ(set(files, u"C:\\c.jpg:s", "-SetXMP", "<x/>"), -37);
    FakeCall missing({u"-SetXMP", u"C:\\none.jpg", destination, u"<x/>"});
    EXPECT_EQ(set_metadata(missing, files).error(), ErrorCode::NotFound);
}

TEST(SetMetadata, StepsNameTheTargetAndTheEncoding) {
    const auto result = [](std::int32_t action, std::int32_t encoding) {
        FakeSystem files;
        files.add(source, plain);
        FakeCall call({u"", source, u"", u"", u"caf\u00E9", u""});
        call.set_step_option(3, action);
        call.set_step_option(5, encoding);
        const Result<void> done = set_metadata(call, files);
        return done ? files.at(source) : "!" + std::to_string(number(done.error()));
    };
    const auto comment = [](const std::string& text) {
        return std::string(plain).insert(plain.size() - frame.size(), com(text));
    };
    EXPECT_EQ(result(4, 0), comment("caf\xE9"));
    EXPECT_EQ(result(4, 1), comment("caf\xC3\xA9"));
    EXPECT_TRUE(has(result(2, 0), "<?xpacket"));
    EXPECT_TRUE(has(result(3, 0), "8BIM\4\v"));
    for (const std::int32_t refused : {0, 1, 5, -1, params::Call::not_given}) // no tagged text
        EXPECT_EQ(result(refused, 0), "!-50") << refused;
}

TEST(SetMetadata, NoFailureLosesTheFile) {
    const std::string file =
        soi + exif_segment(build_tiff(ByteOrder::Big, {.first = {ascii(271, "Vell")}})) +
        com("old") + frame + std::string(200'000, 'y');
    for (const auto& [switches, text] :
         {std::pair{"-SetExif", "##EXIF 272\rOne\r##END 272"}, {"JPEGComment", "new"}}) {
        const std::string expected = written(file, switches, text);
        ASSERT_TRUE(expected.ends_with("yyy"));
        for (const std::u16string& target : {std::u16string(), source, destination})
            EXPECT_EQ(written_whatever_fails({{source, file}}, target, switches, text), expected);
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
            FakeSystem files;
            files.add(source, bytes);
            const std::string text = metadata_text(files, getting, source);
            if (text.empty())
                continue;
            ASSERT_EQ(set(files, destination, setting, text), 0);
            ASSERT_EQ(metadata_text(files, getting, destination), text);
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
} // namespace vell::metadata::set_metadata_test
