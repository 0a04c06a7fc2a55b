// Metadata written into PNG, WebP and TIFF files, and beside photographs.
#include "src/formats/recognition.h"
#include "src/metadata/writing/block_place.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"
#include "tests/portable/written_file.h"

#include <gtest/gtest.h>

#include <map>

namespace vell::metadata {
namespace {

using namespace vell::test;

const std::string title = section("EXIF", 270, "A title");
const std::string exif_text = title + section("EXIF", 33434, "1/250") + section("GPS", 2, "40.5");
const std::string packet_text = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\xC3\xBC</x:xmpmeta>";
const std::string iptc_text = section("IPTC", 25, "one") + section("IPTC", 25, "two");

using Chunks = std::vector<std::string>;

std::string chunk(const std::string& type, const std::string& data) {
    const std::string bytes = type + data;
    const uLong sum =
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
    return big32(static_cast<std::uint32_t>(data.size())) + bytes +
           big32(static_cast<std::uint32_t>(sum));
}

std::string joined(const Chunks& chunks) {
    std::string bytes;
    for (const std::string& each : chunks)
        bytes += each;
    return bytes;
}

std::string png_of(const Chunks& chunks) {
    return "\x89PNG\r\n\x1A\n" + joined(chunks);
}

const std::string header = chunk("IHDR", std::string("\0\0\0\1\0\0\0\1\10\0\0\0\0", 13));
const std::string profile = chunk("iCCP", "p");
const std::string data = chunk("IDAT", "image");
const std::string more_data = chunk("IDAT", "more");
const std::string end = chunk("IEND", "");
const std::string trailer = "behind the end";

// What is between the profile and the data, all else being as it was.
std::string put_before_data(std::string_view switches, std::string_view text,
                            const std::string& old = "") {
    const std::string start = png_of({header, profile});
    const std::string behind = data + more_data + end + trailer;
    const std::string file = written(start + old + behind, switches, text);
    if (!file.starts_with(start) || !file.ends_with(behind))
        return file;
    return file.substr(start.size(), file.size() - start.size() - behind.size());
}

std::string little_tags(TiffFields first) {
    return build_tiff(ByteOrder::Little, {.first = std::move(first)});
}

TEST(WrittenPng, TagsStandBeforeTheImageData) {
    const std::string tags = chunk("eXIf", little_tags({ascii(270, "A title")}));
    EXPECT_EQ(put_before_data("-SetExif", title), tags);
    const std::string old = chunk("eXIf", little_tags({ascii(270, "An old one")}));
    const std::string text = chunk("tEXt", std::string("Author\0me", 9));
    const std::string changed = put_before_data("-SetExif", title, old + text);
    EXPECT_TRUE(changed.ends_with(text));
    EXPECT_EQ(metadata_of("GetExif", png_of({header, changed, data, end})),
              "|##EXIF 270|A title|##END 270");
    // One that stands behind the image, and one too many, give way.
    const std::string late = png_of({header, profile, data, more_data, text});
    EXPECT_EQ(written(late + old + old + end, "-SetExif", section("EXIF", 270, "B")),
              png_of({header, profile, chunk("eXIf", little_tags({ascii(270, "B")})), data,
                      more_data, text, end}));
    // So does the first frame of an animation, whose control belongs to its data.
    const std::string control = chunk("acTL", std::string(8, '\1'));
    const std::string frame = chunk("fcTL", std::string(26, '\1'));
    EXPECT_EQ(written(png_of({header, control, frame, data, end}), "-SetExif", title),
              png_of({header, control, tags, frame, data, end}));
    const std::string apple = chunk("CgBI", "appl");
    EXPECT_EQ(written(png_of({apple, header, data, end}), "-SetExif", title),
              png_of({apple, header, tags, data, end}));
    EXPECT_EQ(put_before_data("-SetExif", section("EXIF", 270, ""), tags),
              chunk("eXIf", std::string("II*\0\10\0\0\0\0\0\0\0\0\0", 14)));
    EXPECT_EQ(put_before_data("-SetExif", section("EXIF", 270, ""), text), "!-2026");
    EXPECT_EQ(put_before_data("-SetExif", title, chunk("eXIf", "no tags")), "!-302");
}

std::string raw_profile(const std::string& name, const std::string& bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "\n" + name + "\n" + std::to_string(bytes.size()) + "\n";
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += {digits[value / 16], digits[value % 16]};
    }
    return chunk("zTXt", "Raw profile type " + name + std::string(2, '\0') + deflated(text + "\n"));
}

std::string packet_chunk(const std::string& packet) {
    return chunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0", 22) + packet);
}

TEST(WrittenPng, PacketsStandWhereTheyStood) {
    const std::string packet = packet_begin + packet_text + packet_end;
    EXPECT_EQ(put_before_data("-SetXMP", packet), packet_chunk(packet));
    const std::string other =
        chunk("iTXt", std::string("XML:com.adobe.xmp2\0\0\0\0\0", 23) + "packet");
    const std::string compressed =
        chunk("iTXt", std::string("XML:com.adobe.xmp\0\1\0\0\0", 22) + deflated(packet));
    const std::string late = png_of({header, data, other, compressed, end});
    // One that says the same already stays as it is.
    EXPECT_EQ(written(late, "-SetXMP", metadata_of("GetXMP -SourceUTF8Charset", late)), late);
    EXPECT_EQ(written(late, "-SetXMP", packet + "x"),
              png_of({header, data, other, packet_chunk(packet + "x"), end}));
    EXPECT_EQ(put_before_data("-SetXMP", packet,
                              other + raw_profile("xmp", "old") + packet_chunk("x") + profile +
                                  packet_chunk("y")),
              other + packet_chunk(packet) + profile);
    EXPECT_EQ(put_before_data("-SetXMP", "", other + packet_chunk("x") + packet_chunk("y")), other);
    EXPECT_EQ(put_before_data("-SetXMP", "", other), "!-2026");
    EXPECT_EQ(put_before_data("-SetXMP", "http://ns.adobe.com/xmp/extension/\rtext"), "!-4243");
}

TEST(WrittenPng, IptcAndUrlStandInAProfileOfOtherPrograms) {
    const std::string one = put_before_data("-SetIPTC", section("IPTC", 5, "x"));
    EXPECT_EQ(one, chunk("tEXt", std::string("Raw profile type iptc\0", 22) +
                                     "\niptc\n      26\n"
                                     "3842494d04040000000000" // 8BIM, 0x0404, no name
                                     "0d1c020000020004"       // 13 bytes; 2:0 is 4
                                     "1c020500017800\n"));
    const std::string resources = resource(0x0425, "digest!!") + resource(0x0404, "\x1C\2");
    EXPECT_EQ(put_before_data("-SetIPTC", "", raw_profile("8bim", resources)),
              chunk("tEXt", std::string("Raw profile type 8bim\0", 22) +
                                "\n8bim\n      20\n"
                                "3842494d04250000000000086469676573742121\n"));
    std::string url = put_before_data("-SetImageURL", "u", raw_profile("iptc", resources));
    std::erase(url, '\n');
    EXPECT_TRUE(has(url, "3842494d040b0000000000017500")) << url;
    EXPECT_TRUE(has(url, "3842494d04040000000000021c02")) << url;
    // Datasets that stand in a profile alone count as well.
    EXPECT_EQ(put_before_data("-SetIPTC", section("IPTC", 5, "x"),
                              raw_profile("iptc", dataset(2, 5, "a title"))),
              one);
    EXPECT_EQ(put_before_data("-SetImageURL", "", one), "!-2026");
    EXPECT_EQ(put_before_data(
                  "-SetExif", section("EXIF", 271, "V"),
                  raw_profile("exif", std::string("Exif\0\0", 6) + little_tags({ascii(272, "M")})) +
                      raw_profile("APP1", "another")),
              chunk("eXIf", little_tags({ascii(271, "V"), ascii(272, "M")})) +
                  raw_profile("APP1", "another"));
}

TEST(WrittenPng, CommentsSayHowTheyAreEncoded) {
    const auto plain = [](const std::string& text) {
        return chunk("tEXt", std::string("Comment\0", 8) + text);
    };
    const auto international = [](const std::string& text) {
        return chunk("iTXt", std::string("Comment\0\0\0\0\0", 12) + text);
    };
    EXPECT_EQ(put_before_data("JPEGComment", "caf\xC3\xA9\r\nand\rmilk"),
              plain("caf\xE9\nand\nmilk"));
    EXPECT_EQ(put_before_data("JPEGComment -WinCharset", "\xE6\x97\xA5"),
              international("\xE6\x97\xA5"));
    const std::string other = chunk("tEXt", std::string("Commentary\0x", 12));
    EXPECT_EQ(put_before_data("JPEGComment", "##JCOM\rnew\r##END ",
                              international("\xE6\x97\xA5") + other + plain("old") +
                                  chunk("tEXt", std::string("comment\0c", 9))),
              plain("new") + other);
    EXPECT_EQ(put_before_data("JPEGComment", "", plain("old") + other), other);
    EXPECT_EQ(put_before_data("JPEGComment", "", other), "!-2026");
    EXPECT_EQ(put_before_data("JPEGComment", std::string(5000, 'x')),
              plain(std::string(5000, 'x')));
}

TEST(WrittenPng, DamageBehindTheImageDataStays) {
    const std::string packet = packet_chunk("x");
    const std::string cut = png_of({header, data}) + big32(100) + "IDATimage";
    EXPECT_EQ(written(cut, "JPEGComment", "c"),
              png_of({header, chunk("tEXt", std::string("Comment\0c", 9)), data}) + big32(100) +
                  "IDATimage");
    const std::pair<std::string, const char*> damaged[] = {
        {png_of({header, packet}), "!-39"},
        {png_of({header, packet}) + big32(100) + "IDATimage", "!-39"},
        {png_of({data, header, end}), "!-4247"},
        {png_of({}), "!-4247"},
    };
    for (const auto& [file, code] : damaged)
        EXPECT_EQ(written(file, "-SetXMP", "x"), code) << file;
    // No more is allocated than a file has.
    EXPECT_EQ(written(png_of({header}) + big32(0x7FFFFFFF) + "eXIf", "-SetExif", exif_text),
              "!-39");
}

std::string riff_chunk(const std::string& id, const std::string& bytes) {
    return id + little32(static_cast<std::uint32_t>(bytes.size())) + bytes +
           std::string(bytes.size() % 2, '\0');
}
std::string webp_of(const Chunks& chunks) {
    const std::string bytes = "WEBP" + joined(chunks);
    return "RIFF" + little32(static_cast<std::uint32_t>(bytes.size())) + bytes;
}
std::string extended(char features) {
    return riff_chunk("VP8X", features + std::string("\0\0\0\x0F\x01\0\x1F\0\0", 9));
}

// 272 x 32, with a scale in the bits above.
const std::string lossy =
    riff_chunk("VP8 ", std::string("\x10\0\0\x9D\x01\x2A\x10\x41\x20\x80", 10) + "picture");
const std::string lossless = // with alpha
    riff_chunk("VP8L", std::string("\x2F\x0F\xC1\x07\x10", 5) + "pixels");

TEST(WrittenWebp, MakesTheExtendedHeaderAndKeepsTheOrder) {
    const std::string tags = riff_chunk("EXIF", little_tags({ascii(270, "A title")}));
    const std::string packet = riff_chunk("XMP ", "<?xpacket begin=");
    const std::string unknown = riff_chunk("mine", "odd");
    const std::string animation = riff_chunk("ANIM", "loops!") + riff_chunk("ANMF", "frame");
    const std::string icc = riff_chunk("ICCP", "p");
    // What JPEG files have before the tags is no part of them, and the tags are merged.
    const std::string prefixed =
        riff_chunk("EXIF", std::string("Exif\0\0", 6) + little_tags({ascii(271, "V")}));
    const std::string merged =
        riff_chunk("EXIF", little_tags({ascii(270, "A title"), ascii(271, "V")}));
    const std::pair<Chunks, Chunks> with_tags[] = {
        {{lossy}, {extended(8), lossy, tags}},
        {{lossless}, {extended(0x18), lossless, tags}},
        {{lossy, unknown}, {extended(8), lossy, tags, unknown}},
        {{extended(0x06), animation, packet, unknown},
         {extended(0x0E), animation, tags, packet, unknown}},
        {{extended(0x28), riff_chunk("EXIF", ""), icc, lossy, riff_chunk("EXIF", "x"), unknown},
         {extended(0x28), icc, lossy, tags, unknown}},
        {{extended(8), lossy, prefixed}, {extended(8), lossy, merged}},
    };
    for (const auto& [before, after] : with_tags)
        EXPECT_EQ(written(webp_of(before), "-SetExif", title), webp_of(after));
    const std::tuple<const char*, Chunks, Chunks> with_packet[] = {
        {"<?xpacket begin=",
         {extended(8), lossy, unknown, tags, unknown},
         {extended(0x0C), lossy, unknown, tags, packet, unknown}},
        {"<?xpacket begin=", {lossy, tags}, {extended(0x0C), lossy, tags, packet}},
        {"", {extended(0x0C), lossy, tags, packet}, {extended(8), lossy, tags}},
    };
    for (const auto& [text, before, after] : with_packet)
        EXPECT_EQ(written(webp_of(before), "-SetXMP", text), webp_of(after));
    EXPECT_EQ(written(webp_of({extended(8), lossy, tags}), "-SetXMP", ""), "!-2026");
    EXPECT_EQ(written(webp_of({lossy}), "-SetXMP", "http://ns.adobe.com/xmp/extension/\rx"),
              "!-4243");
}

TEST(WrittenWebp, RefusesWhatIsNoWholeWebp) {
    const std::string whole = webp_of({lossy});
    for (const char* switches : {"-SetIPTC", "-SetImageURL", "JPEGComment"})
        EXPECT_EQ(written(whole, switches, ""), "!-4243") << switches;
    const std::string sound = "RIFF" + little32(12) + "WAVEfmt " + little32(0);
    EXPECT_EQ(written(sound, "-SetExif", title), "!-71");
    EXPECT_EQ(written("RIFF\4", "-SetExif", title), "!-39");
    for (const std::string& damaged :
         {riff_chunk("ANIM", "loops!"), riff_chunk("VP8 ", "no picture"),
          riff_chunk("VP8X", "short") + lossy})
        EXPECT_EQ(written(webp_of({damaged}), "-SetXMP", "x"), "!-4249") << damaged;
    for (std::size_t size = 12; size < whole.size(); ++size)
        EXPECT_EQ(written(whole.substr(0, size), "-SetXMP", "x"), "!-39");
    // The byte that pads the last chunk may be missing, and others stand behind the file.
    std::string unpadded = webp_of({lossy});
    unpadded.pop_back();
    unpadded.replace(4, 4, little32(static_cast<std::uint32_t>(unpadded.size() - 8)));
    EXPECT_EQ(written(unpadded + trailer, "-SetExif", title),
              written(whole, "-SetExif", title) + trailer);
}

// A TIFF of two pages, with a strip each and a directory below the first one.
std::string pages(ByteOrder order, std::string_view behind = "") {
    std::string file = build_tiff(order, {.first = {{256, FieldType::Short, {4}},
                                                    {273, FieldType::Long, {400}},
                                                    {279, FieldType::Long, {5}},
                                                    ascii(270, "An old title"),
                                                    {330, FieldType::Long, {300}}},
                                          .exif = {undefined(37500, "maker note")}});
    EXPECT_LT(file.size(), 300U);
    file.resize(300);
    file += build_tiff(order, {.first = {{256, FieldType::Short, {2}}}}).substr(8);
    file.resize(400);
    const std::size_t next = 8 + 2 + 6 * 12;
    file.replace(next, 4, order == ByteOrder::Big ? big32(350) : little32(350)); // without entries
    return file + "strip" + std::string(behind);
}

// The directory of the header, and of those that follow it.
std::vector<std::vector<tiff::Entry>> chain_of(const std::string& file) {
    std::vector<std::vector<tiff::Entry>> chain;
    const ByteOrder order = file[0] == 'I' ? ByteOrder::Little : ByteOrder::Big;
    std::uint32_t offset = *load<std::uint32_t>(file, 4, order);
    while (offset != 0 && chain.size() < 5) {
        const std::uint16_t count = *load<std::uint16_t>(file, offset, order);
        auto& entries = chain.emplace_back();
        for (std::size_t i = 0; i < count; ++i)
            entries.push_back(*formats::read_record<tiff::Entry>(
                std::string_view(file).substr(offset + 2 + i * 12), order));
        offset = load<std::uint32_t>(file, offset + 2 + count * 12U, order).value_or(0);
    }
    return chain;
}

TEST(WrittenTiff, NewDirectoriesStandBehindTheFile) {
    const struct {
        const char* switches;
        std::string text;
        const char* reading;
        std::string read;
    } writes[] = {
        {"-SetExif -AddExifMakerNote", exif_text, "GetExif GetGPS -Format=Decimal",
         "##EXIF 270|A title|##END 270"},
        {"-SetXMP", packet_text, "GetXMP -SourceUTF8Charset", packet_text},
        {"-SetIPTC", iptc_text, "GetIPTC", "##IPTC 25|two|##END 25"},
        {"-SetImageURL", "http://x", "GetImageURL", "http://x"},
    };
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string file = pages(order);
        for (const auto& [switches, text, reading, read] : writes) {
            const std::string after = written(file, switches, text);
            ASSERT_FALSE(after.starts_with('!')) << switches << after;
            EXPECT_EQ(after.substr(0, 4), file.substr(0, 4));
            EXPECT_EQ(after.substr(8, file.size() - 8), file.substr(8));
            EXPECT_TRUE(has(metadata_of(reading, after), read)) << metadata_of(reading, after);
            const auto old_chain = chain_of(file);
            const auto chain = chain_of(after);
            ASSERT_EQ(chain.size(), old_chain.size());
            for (const tiff::Entry& entry : old_chain[0])
                if (entry.tag != 270 && entry.tag != tiff::tag::exif_directory) {
                    EXPECT_TRUE(std::ranges::any_of(chain[0], [&](const tiff::Entry& other) {
                        return other.tag == entry.tag && other.value == entry.value;
                    })) << entry.tag;
                }
            EXPECT_TRUE(std::ranges::is_sorted(chain[0], {}, &tiff::Entry::tag) ||
                        !std::ranges::is_sorted(old_chain[0], {}, &tiff::Entry::tag));
            EXPECT_EQ(written(after, switches, text), after) << switches;
            EXPECT_EQ(written(pages(order, "x"), switches, text).size() % 2, after.size() % 2);
        }
        const std::string without = written(file, "-SetExif", "");
        EXPECT_EQ(chain_of(without)[0].size(), 5U); // with the maker note its directory has gone
        EXPECT_EQ(written(without, "-SetExif", ""), "!-2026");
        for (const char* switches : {"-SetXMP", "-SetIPTC"})
            EXPECT_EQ(written(file, switches, ""), "!-2026") << switches;
        EXPECT_EQ(metadata_of("GetXMP", written(written(file, "-SetXMP", "x"), "-SetXMP", "")),
                  "!-2026");
    }
}

TEST(WrittenTiff, WhatSaysHowThePictureIsStoredStays) {
    const std::string file = pages(ByteOrder::Little);
    const std::string stored = section("EXIF", 256, "100") + section("EXIF", 273, "1") +
                               section("EXIF", 259, "") + section("EXIF", 254, "1");
    EXPECT_EQ(written(file, "-SetExif -AddExifMakerNote", stored + section("EXIF", 258, "8")),
              file);
    EXPECT_EQ(written(file, "-SetExif", section("EXIF", 330, "1")), "!-50");
    EXPECT_EQ(written(file, "JPEGComment", "x"), "!-4243");
    // IPTC among the image resources is kept up with that of the tag.
    const std::string resources = resource(0x0425, "digest!!") + resource(0x0404, "\x1C\2");
    const std::string both = build_tiff(
        ByteOrder::Big, {.first = {{256, FieldType::Short, {4}}, bytes(34377, resources)}});
    const std::string after = written(both, "-SetIPTC", section("IPTC", 5, "x"));
    const std::string datasets = dataset(2, 0, std::string("\0\4", 2)) + dataset(2, 5, "x");
    EXPECT_NE(after.find(datasets, after.find(datasets) + 1), std::string::npos);
    EXPECT_NE(after.find(resource(0x0425, "digest!!") + resource(0x0404, datasets), both.size()),
              std::string::npos);
    const std::string none = written(after, "-SetIPTC", "");
    EXPECT_EQ(none.find("8BIM\4\4", after.size()), std::string::npos);
    EXPECT_EQ(chain_of(none)[0].size(), 2U);
    EXPECT_EQ(written(none, "-SetIPTC", ""), "!-2026");
}

TEST(WrittenTiff, RawPhotographsAndDamageAreRefused) {
    TiffFields sensor = {{256, FieldType::Short, {4}}, {262, FieldType::Short, {32803}}};
    EXPECT_EQ(written(build_tiff(ByteOrder::Little, {.first = sensor}), "-SetXMP", "x"), "!-71");
    sensor.push_back(bytes(50706, std::string("\1\4\0\0", 4))); // DNG
    EXPECT_TRUE(written(build_tiff(ByteOrder::Little, {.first = sensor}), "-SetXMP", "x")
                    .starts_with("II*"));
    std::string below = pages(ByteOrder::Big);
    below.replace(302, 12, big16(262) + big16(3) + big32(1) + big16(32803) + big16(0));
    EXPECT_EQ(written(below, "-SetXMP", "x"), "!-71");
    for (const char16_t* name : {u"C:\\a.NEF", u"C:\\a.cr2"}) {
        FakeSystem files;
        files.add(name, pages(ByteOrder::Big));
        FakeCall call({u"-SetXMP", name, u"", u"x"});
        EXPECT_EQ(set_metadata(call, files).error(), ErrorCode::NotAJpeg);
    }
    EXPECT_EQ(written(std::string("MM\0\x2B\0\10\0\0", 8) + big32(0), "-SetXMP", "x"), "!-71");
    EXPECT_EQ(written(std::string("MM\0*\0\0\0\4", 8), "-SetXMP", "x"), "!-4249");
    EXPECT_EQ(written(std::string("MM\0*\0\0\1\0", 8), "-SetXMP", "x"), "!-39");
    const std::string file = build_tiff(ByteOrder::Big, {.first = {{256, FieldType::Short, {4}}}});
    for (std::size_t size = 8; size < file.size(); ++size)
        EXPECT_EQ(written(file.substr(0, size), "-SetXMP", "x"), "!-39") << size;
    const std::string picture = pages(ByteOrder::Big); // ends with its strip
    EXPECT_EQ(written(picture.substr(0, picture.size() - 1), "-SetXMP", "x"), "!-39");
    // A file that has no room for more, of which only the directory is read.
    EndlessFile large(file, "x", 0xFFFF'F000);
    auto reader = files::BufferedReader::over(large);
    const std::u16string_view name = u"a.tif";
    auto place = find_block_place(*reader, {BlockKind::Xmp, "x", name});
    ASSERT_TRUE(place);
    EXPECT_FALSE((*place)->put(std::string(0x1000, 'x')));
    EXPECT_LE(large.bytes_read(), 100'000U);
}

const std::u16string sidecar = u"C:\\a.XMP";

TEST(Sidecar, IsAllThatIsWrittenBesideAPhotograph) {
    FakeSystem files;
    files.add(source, "a raw photograph");
    EXPECT_EQ(set(files, sidecar, "-SetXMP", ""), -2026);
    EXPECT_EQ(set(files, sidecar, "-SetXMP", packet_text), 0);
    const std::string first = files.at(sidecar);
    EXPECT_EQ(first, packet_begin + packet_text + "\n" + packet_end);
    EXPECT_TRUE(has(metadata_of("GetXMP -SourceUTF8Charset", first), packet_text));
    EXPECT_EQ(set(files, sidecar, "-SetXMP", metadata_of("GetXMP -SourceUTF8Charset", first)), 0);
    EXPECT_EQ(files.at(sidecar), first);
    EXPECT_EQ(set(files, sidecar, "-SetXMP", "<other/>"), 0);
    EXPECT_TRUE(has(files.at(sidecar), "<other/>"));
    for (const char* switches : {"-SetExif", "-SetIPTC", "-SetImageURL", "JPEGComment"})
        EXPECT_EQ(set(files, sidecar, switches, exif_text), -4243) << switches;
    EXPECT_EQ(set(files, sidecar, "-SetXMP", "http://ns.adobe.com/xmp/extension/\rx"), -4243);
    FakeCall in_place({u"-SetXMP", sidecar, u"", u"<third/>"});
    EXPECT_TRUE(set_metadata(in_place, files));
    EXPECT_TRUE(has(files.at(sidecar), "<third/>"));
    EXPECT_EQ(files.contents().size(), 2U);
    EXPECT_EQ(set(files, sidecar, "-SetXMP", " "), 0);
    EXPECT_EQ(files.contents().size(), 1U);
    EXPECT_EQ(files.at(source), "a raw photograph");
    FakeCall missing({u"-SetXMP", u"C:\\none.nef", sidecar, u"<x/>"});
    EXPECT_EQ(set_metadata(missing, files).error(), ErrorCode::NotFound);
    EXPECT_EQ(files.open_files(), 0);

    // What is too long for a packet is not replaced.
    const std::string other((64 << 20) + 1, ' ');
    files.add(sidecar, other);
    EXPECT_EQ(set(files, sidecar, "-SetXMP", packet_text), -207);
    EXPECT_TRUE(files.at(sidecar) == other);
}

TEST(WrittenFormats, NoFailureLosesTheFile) {
    const std::string files_to_write[] = {png_of({header, data, end}), webp_of({lossless}),
                                          pages(ByteOrder::Big)};
    for (const std::string& file : files_to_write)
        for (const auto& [switches, text] :
             {std::pair{"-SetExif", exif_text}, {"-SetXMP", packet_text}})
            for (const std::u16string& target : {std::u16string(), destination})
                EXPECT_EQ(written_whatever_fails({{source, file}}, target, switches, text),
                          written(file, switches, text));
    const std::u16string lower = u"C:\\a.xmp";
    written_whatever_fails({{source, "photograph"}, {lower, "old"}}, lower, "-SetXMP", "<x/>");
}

// The chunks of a PNG or WebP file that no write of ours changes, and what is behind the last one.
std::string other_chunks(const std::string& file) {
    constexpr std::string_view own[] = {"eXIf", "tEXt", "iTXt", "zTXt", "EXIF", "XMP ", "VP8X"};
    const bool is_png = file.starts_with("\x89PNG");
    const ByteOrder order = is_png ? ByteOrder::Big : ByteOrder::Little;
    const std::size_t until = is_png ? file.size() : *load<std::uint32_t>(file, 4, order) + 8U;
    std::string others;
    std::size_t at = is_png ? 8 : 12;
    while (at + 8 <= until) {
        const std::size_t size = *load<std::uint32_t>(file, at + (is_png ? 0 : 4), order);
        const std::string type = file.substr(at + (is_png ? 4 : 0), 4);
        if (std::ranges::find(own, type) == std::end(own))
            others += file.substr(at, size + (is_png ? 12 : 8)) + "\n";
        at += size + (is_png ? 12 : 8 + size % 2);
    }
    EXPECT_TRUE(is_png || at == until);
    return others + file.substr(std::min(at, file.size()));
}

// What is written, and how a part of it is read again.
const std::tuple<const char*, std::string, const char*, std::string> real_writes[] = {
    {"-SetExif -AddExifMakerNote", title + section("GPS", 29, "2020:12:31"), "GetExif",
     "##EXIF 270|A title|##END 270"},
    {"-SetXMP", packet_text, "GetXMP -SourceUTF8Charset", packet_text},
    {"-SetIPTC", iptc_text, "", ""},
    {"-SetImageURL", "http://vellfile.example", "", ""},
    {"JPEGComment", "A comment", "", ""},
};

TEST(WrittenFormats, AllElseInRealFilesStays) {
    const auto real = real_files({"png", "png2", "picture", "tiff", "tiff2", "raw"});
    if (real.empty())
        GTEST_SKIP() << no_real_files;
    std::map<formats::Format, int> writes;
    for (const auto& path : real) {
        const std::string file = bytes_of(path);
        const formats::Format format = formats::format_of(file);
        if (file.size() > 2'000'000 ||
            (format != formats::Format::Png && format != formats::Format::Riff &&
             format != formats::Format::Tiff))
            continue;
        for (const auto& [switches, text, reading, part] : real_writes) {
            SCOPED_TRACE(path.string() + " " + switches);
            const std::string after = written(file, switches, text);
            if (after.starts_with('!'))
                continue;
            ++writes[format];
            EXPECT_TRUE(written(after, switches, text) == after);
            if (format == formats::Format::Tiff) {
                EXPECT_TRUE(after.starts_with(file.substr(0, 4)) &&
                            after.substr(8, file.size() - 8) == file.substr(8));
            } else {
                EXPECT_TRUE(other_chunks(after) == other_chunks(file));
            }
            if (!part.empty() && format != formats::Format::Riff) {
                EXPECT_TRUE(has(metadata_of(reading, after), part));
            }
        }
    }
    EXPECT_GT(writes[formats::Format::Png], 100);
    EXPECT_GT(writes[formats::Format::Riff], 20);
    EXPECT_GT(writes[formats::Format::Tiff], 20);
    for (const auto& path : real_files({"raw", "raw2"})) {
        const std::string file = bytes_of(path);
        if (path.extension() == ".dng" || formats::format_of(file) == formats::Format::Jpeg)
            continue;
        EXPECT_TRUE(written(file, "-SetXMP", packet_text) == "!-71") << path;
    }
}

} // namespace
} // namespace vell::metadata
