// What is found in containers, and what the questions of VlFile_GetMetaData make of it.
#include "src/metadata/containers/metadata_blocks.h"

#include "src/base/ascii.h"
#include "src/base/md5.h"
#include "src/base/number_text.h"
#include "src/metadata/reading/tag_reader.h"
#include "tests/portable/camera_builder.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"
#include "tests/portable/picture_files.h"
#include "tests/portable/real_files.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <bit>
#include <map>

namespace vell::metadata {
namespace {

using namespace vell::test;
using namespace std::string_literals;
using formats::Window;

constexpr BlockKinds everything{true, true, true, true, true, true, true};

std::string tags_of(const MetadataBlocks& blocks) {
    std::string all;
    for (const TagBlock& block : blocks.tags) {
        MetadataText text;
        const ExifReadOptions options{.want_exif = true, .want_gps = true};
        const auto done = read_tags(block.place, block.root, options, TextEncoding::Utf8, text);
        all += shown(text) + (done ? ";" : "!" + std::to_string(number(done.error())));
    }
    return all;
}

// A line for each kind that is there.
std::string told(const MetadataBlocks& blocks) {
    std::string all;
    const auto add = [&](const char* name, const std::optional<std::string>& value) {
        if (value)
            all += std::string(name) + "=" + *value + "\n";
    };
    if (!blocks.tags.empty())
        all += "tags=" + tags_of(blocks) + "\n";
    add("iptc", blocks.iptc);
    add("xmp", blocks.xmp);
    add("icc", blocks.icc);
    add("url", blocks.image_url);
    for (const std::string& comment : blocks.comments)
        all += "comment=" + comment + "\n";
    for (const TextEntry& entry : blocks.texts)
        all += entry.keyword + ":" + entry.text + "\n";
    return all;
}
std::string found_in(const std::string& file, const BlockKinds& wanted = everything) {
    BytesInMemory source(file);
    const auto blocks = find_blocks(Window(source), wanted);
    return blocks ? told(*blocks) : "!" + std::to_string(number(blocks.error()));
}

const std::string make_block = build_tiff(ByteOrder::Little, {.first = {ascii(271, "Maker")}});

std::string tags_line(const std::string& make) {
    MetadataText text;
    text.append("\r##EXIF 271\r");
    text.append(make, TextEncoding::Utf8);
    text.append("\r##END 271");
    return "tags=" + shown(text) + ";\n";
}
const std::string maker = tags_line("Maker");

std::string iptc(const std::string& title) {
    return dataset(2, 5, title);
}

// RIFF.
std::string chunk(const std::string& type, const std::string& data) {
    return type + little32(static_cast<std::uint32_t>(data.size())) + data +
           std::string(data.size() % 2, '\0');
}
std::string webp(const std::string& chunks) {
    return chunk("RIFF", "WEBP" + chunks);
}

std::string psd(const std::string& resources, std::uint16_t version = 1) {
    return "8BPS" + big16(version) + std::string(6, '\0') + big16(4) + big32(107) + big32(160) +
           big16(8) + big16(3) + big32(2) + "cc" +
           big32(static_cast<std::uint32_t>(resources.size())) + resources + "layers";
}
std::string even(const std::string& data) {
    return data + std::string(data.size() % 2, '\0');
}
std::string whole_resource(std::uint16_t id, const std::string& data) {
    return even(resource(id, data));
}

std::string jpeg_xl(const std::string& boxes) {
    return box("JXL ", "\r\n\x87\n") + box("ftyp", "jxl " + big32(0) + "jxl ") + boxes;
}

// Items at the end of the file: tags, a packet; a profile of the first of two images.
std::string heic(const std::string& exif, const std::string& packet, const std::string& colr,
                 const std::string& between = "") {
    const auto with = [&](std::size_t data) {
        const auto entry = [](std::uint16_t id, const std::string& rest) {
            return full_box("infe", big16(id) + big16(0) + rest, 2);
        };
        const auto place = [](std::uint16_t id, std::size_t offset, std::size_t length) {
            return big16(id) + big16(0) + big16(1) + big32(static_cast<std::uint32_t>(offset)) +
                   big32(static_cast<std::uint32_t>(length));
        };
        const std::string packet_entry = "mime"s + '\0' + "application/rdf+xml" + '\0';
        return box("ftyp", "heic" + big32(0) + "mif1heic") +
               full_box("meta",
                        full_box("hdlr", big32(0) + "pict" + std::string(13, '\0')) +
                            full_box("pitm", big16(1)) +
                            full_box("iinf", big16(4) + entry(1, "grid\0"s) + entry(2, "hvc1\0"s) +
                                                 entry(3, "Exif\0"s) + entry(4, packet_entry)) +
                            full_box("iref", box("dimg", big16(1) + big16(1) + big16(2)) +
                                                 box("cdsc", big16(3) + big16(1) + big16(1))) +
                            full_box("iloc", big16(0x4400) + big16(2) +
                                                 place(3, data + between.size(), exif.size()) +
                                                 place(4, data + between.size() + exif.size(),
                                                       packet.size())) +
                            box("iprp", box("ipco", box("colr", "nclx123") + box("colr", colr)) +
                                            full_box("ipma", big32(1) + big16(2) + "\2\1\2")));
    };
    return with(with(0).size() + 8) + box("mdat", between + exif + packet);
}

// A BigTIFF file with one directory of tags, whose values are of bytes; those of more than eight
// stand behind it.
struct BigField {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint64_t count;
    std::string value;
};
template <typename Integer>
std::string integer(Integer value, ByteOrder order) {
    std::string bytes;
    append_integer<Integer>(bytes, value, order);
    return bytes;
}
std::string big_directory(ByteOrder order, std::uint64_t at, const std::vector<BigField>& fields) {
    std::string bytes = integer<std::uint64_t>(fields.size(), order);
    std::string values;
    const std::uint64_t values_at = at + 8 + 20 * fields.size() + 8;
    for (const BigField& field : fields) {
        bytes += integer<std::uint16_t>(field.tag, order) +
                 integer<std::uint16_t>(field.type, order) +
                 integer<std::uint64_t>(field.count, order);
        if (field.value.size() <= 8) {
            bytes += field.value + std::string(8 - field.value.size(), '\0');
        } else {
            bytes += integer<std::uint64_t>(values_at + values.size(), order);
            values += field.value;
        }
    }
    return bytes + integer<std::uint64_t>(0, order) + values;
}
std::string big_tiff(ByteOrder order) {
    const auto directories = [&](std::uint64_t exif_at) {
        const std::string first = big_directory(
            order, 16,
            {{256, 3, 1, integer<std::uint16_t>(300, order)},
             {257, 16, 1, integer<std::uint64_t>(200, order)},
             {258, 3, 3,
              integer<std::uint16_t>(8, order) + integer<std::uint16_t>(8, order) +
                  integer<std::uint16_t>(8, order)},
             {271, 2, 6, "Maker\0"s},
             {272, 2, 13, "Its own model"},
             {273, 16, 2, integer<std::uint64_t>(77, order) + integer<std::uint64_t>(88, order)},
             {277, 3, 1, integer<std::uint16_t>(3, order)},
             {700, 1, 6, "packet"},
             {33723, 7, iptc("T").size(), iptc("T")},
             {34377, 7, whole_resource(1035, "http").size(), whole_resource(1035, "http")},
             {34665, 18, 1, integer<std::uint64_t>(exif_at, order)},
             {34675, 7, 9, "a profile"}});
        return first;
    };
    const std::uint64_t exif_at = 16 + directories(0).size();
    return (order == ByteOrder::Little ? "II" : "MM") + integer<std::uint16_t>(43, order) +
           integer<std::uint16_t>(8, order) + integer<std::uint16_t>(0, order) +
           integer<std::uint64_t>(16, order) + directories(exif_at) +
           big_directory(order, exif_at, {{34855, 3, 1, integer<std::uint16_t>(400, order)}});
}

std::string extension(const std::string& name, std::size_t full, std::size_t offset,
                      const std::string& data) {
    return segment(SegmentMarker::App1, "http://ns.adobe.com/xmp/extension/\0"s + name +
                                            big32(static_cast<std::uint32_t>(full)) +
                                            big32(static_cast<std::uint32_t>(offset)) + data);
}
std::string packet_segment(const std::string& packet) {
    return segment(SegmentMarker::App1, "http://ns.adobe.com/xap/1.0/\0"s + packet);
}

std::string png_profile(const std::string& kind, const std::string& bytes) {
    return "Raw profile type " + kind + '\0' + "\n" + kind + "\n      " +
           std::to_string(bytes.size()) + "\n" + hexadecimal(bytes) + "\n";
}

TEST(MetadataBlocks, OfJpegAndTiff) {
    const std::string profile(300, 'p');
    const std::string file =
        jpeg({segment(SegmentMarker::App13, "something else"), exif_segment(make_block),
              exif_segment(build_tiff(ByteOrder::Big, {.first = {ascii(271, "Other")}})),
              packet_segment("packet\0\0"s), packet_segment("another"),
              segment(SegmentMarker::App2, "ICC_PROFILE\0\1\2"s + profile.substr(0, 200)),
              segment(SegmentMarker::App2, "ICC_PROFILE\0\2\2"s + profile.substr(200)),
              // Resources that go on in the next segment.
              photoshop(even(resource(1028, iptc("T"))).substr(0, 15)),
              photoshop(even(resource(1028, iptc("T"))).substr(15) + whole_resource(1035, "http")),
              segment(SegmentMarker::Com, "one"), segment(SegmentMarker::Com, "two")});
    EXPECT_EQ(found_in(file), maker + "iptc=" + iptc("T") + "\nxmp=packet\nicc=" + profile +
                                  "\nurl=http\ncomment=one\ncomment=two\n");
    EXPECT_EQ(found_in(file, {}), "");
    EXPECT_EQ(found_in(file, {.image_url = true}), "url=http\n");
    // A profile that lacks a chunk loses nothing else.
    EXPECT_EQ(found_in(jpeg({exif_segment(make_block),
                             segment(SegmentMarker::App2, "ICC_PROFILE\0\1\2"s + profile)})),
              maker);

    const std::string tiff = build_tiff(
        ByteOrder::Big,
        {.first = {ascii(271, "Maker"), bytes(700, "packet\0"s), undefined(33723, iptc("T")),
                   bytes(34377, whole_resource(1028, iptc("R")) + whole_resource(1035, "http")),
                   undefined(34675, profile)}});
    EXPECT_EQ(found_in(tiff),
              maker + "iptc=" + iptc("T") + "\nxmp=packet\nicc=" + profile + "\nurl=http\n");
    const std::string without_block =
        build_tiff(ByteOrder::Big, {.first = {bytes(34377, whole_resource(1028, iptc("R")))}});
    EXPECT_EQ(found_in(without_block, {.iptc = true}), "iptc=" + iptc("R") + "\n");
    EXPECT_EQ(found_in(""), "");
    EXPECT_EQ(found_in("%PDF-1.7 and more"), "");
}

TEST(MetadataBlocks, ExtendedPacketsAreJoinedWhenTheyAreWhole) {
    const std::string rest =
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='r' xmlns:g=\"g/\">"
        "<rdf:Description g:a='1'/></rdf:RDF></x:xmpmeta>";
    const std::string name = hexadecimal(md5(rest));
    const auto packet = [&](const std::string& property, const std::string& more = "") {
        return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='r'" + more +
               "><rdf:Description" + property + "</rdf:RDF></x:xmpmeta>";
    };
    const std::string attribute = " xmpNote:HasExtendedXMP=\"" + name + "\"/>";
    const std::string element =
        "><xmpNote:HasExtendedXMP>" + name + "</xmpNote:HasExtendedXMP></rdf:Description>";
    const auto xmp_of = [&](std::initializer_list<std::string> segments) {
        return found_in(jpeg(segments), {.xmp = true});
    };
    const auto joined = [&](const std::string& property) {
        return "xmp=<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='r' xmlns:g=\"g/\">"
               "<rdf:Description" +
               property + "<rdf:Description g:a='1'/></rdf:RDF></x:xmpmeta>\n";
    };
    const std::string first = extension(name, rest.size(), 0, rest.substr(0, 40));
    const std::string second = extension(name, rest.size(), 40, rest.substr(40));
    EXPECT_EQ(xmp_of({packet_segment(packet(attribute)), first, second}), joined(attribute));
    EXPECT_EQ(xmp_of({second, packet_segment(packet(element)), first}), joined(element));

    const std::string alone = "xmp=" + packet(attribute) + "\n";
    const std::string main = packet_segment(packet(attribute));
    EXPECT_EQ(xmp_of({main}), alone);
    EXPECT_EQ(xmp_of({main, first}), alone) << "a gap at the end";
    EXPECT_EQ(xmp_of({main, second}), alone) << "a gap at the start";
    EXPECT_EQ(xmp_of({main, first, first, second}), alone) << "a part twice";
    EXPECT_EQ(xmp_of({main, first, extension(name, rest.size(), 40, rest.substr(41) + "?")}), alone)
        << "another MD5";
    EXPECT_EQ(xmp_of({main, extension(std::string(32, 'A'), rest.size(), 0, rest)}), alone)
        << "of another packet";
    // A prefix that means something else in the packet.
    const std::string clashing = packet(attribute, " xmlns:g='other/'");
    EXPECT_EQ(xmp_of({packet_segment(clashing), first, second}), "xmp=" + clashing + "\n");
}

TEST(MetadataBlocks, OfPngAndGif) {
    const std::string xmp_keyword = "XML:com.adobe.xmp\0"s;
    const std::string file =
        png({png_chunk("tEXt", "K\xE4se\0caf\xE9"s), png_chunk("zTXt", "Z\0\0"s + deflated("zz")),
             png_chunk("iTXt", "I\0\0\0de\0Wort\0\xC3\xA4"s),
             png_chunk("iTXt", "J\0\1\0\0\0"s + deflated("jj")),
             png_chunk("iTXt", xmp_keyword + "\1\0\0\0"s + deflated("packet")),
             png_chunk("iCCP", "name\0\0"s + deflated("profile")),
             png_chunk("tEXt", png_profile("iptc", whole_resource(1028, iptc("T")) +
                                                       whole_resource(1035, "http"))),
             png_chunk("tEXt", png_profile("xmp", "less")), png_chunk("eXIf", make_block)});
    EXPECT_EQ(found_in(file), maker + "iptc=" + iptc("T") +
                                  "\nxmp=packet\nicc=profile\nurl=http\nK\xC3\xA4se:caf\xC3\xA9\n"
                                  "Z:zz\nI:\xC3\xA4\nJ:jj\n");

    const auto only = [&](const std::string& kind, const std::string& bytes,
                          bool compressed = false) {
        const std::string text = png_profile(kind, bytes);
        const std::size_t end = text.find('\0') + 1;
        return found_in(png(
            {compressed ? png_chunk("zTXt", text.substr(0, end) + '\0' + deflated(text.substr(end)))
                        : png_chunk("tEXt", text)}));
    };
    EXPECT_EQ(only("exif", "Exif\0\0"s + make_block), maker);
    EXPECT_EQ(only("exif", make_block, true), maker);
    EXPECT_EQ(only("APP1", "Exif\0\0"s + make_block, true), maker);
    EXPECT_EQ(only("APP1", "http://ns.adobe.com/xap/1.0/\0packet"s), "xmp=packet\n");
    EXPECT_EQ(only("xmp", "packet", true), "xmp=packet\n");
    EXPECT_EQ(only("icc", "profile", true), "icc=profile\n");
    EXPECT_EQ(only("iptc", iptc("T")), "iptc=" + iptc("T") + "\n");
    EXPECT_EQ(only("8bim", whole_resource(1028, iptc("T"))), "iptc=" + iptc("T") + "\n");
    // Digits that end before the length says.
    EXPECT_EQ(found_in(png({png_chunk("tEXt", "Raw profile type xmp\0\nxmp\n 9\n4142\n"s)})), "");
    // What expands to more than there is room for loses itself alone.
    const std::string bomb = deflated(std::string(longest_blocks + 1, 'x'));
    EXPECT_EQ(found_in(png({png_chunk("iCCP", "name\0\0"s + bomb), png_chunk("eXIf", make_block)})),
              maker);

    const std::string trailer = "\x01" + [] {
        std::string magic;
        for (int i = 255; i >= 0; --i)
            magic += static_cast<char>(i);
        return magic;
    }() + '\0';
    const std::string packet = "<?xpacket a packet of some length, longer than it seems?>";
    const std::string gif = "GIF89a" + "\1\0\1\0\0\0\0"s + "\x21\xFE\3one\3two\0"s +
                            "\x21\xFF\x0BXMP DataXMP" + packet + trailer +
                            "\x21\xFF\x0BICCRGBG1012\3pro\4file\0"s + "\x21\xF9\4\0\0\0\0\0"s +
                            "\x2C\0\0\0\0\1\0\1\0\0\2\2\1\1\0"s + "\x21\xFE\1x\0;"s;
    EXPECT_EQ(found_in(gif), "xmp=" + packet + "\nicc=profile\ncomment=onetwo\ncomment=x\n");
}

TEST(MetadataBlocks, OfFilesInChunksAndBoxes) {
    const std::string exif_offset = "\0\0\0\0"s;
    EXPECT_EQ(found_in(webp(chunk("VP8L", "pixels") + chunk("EXIF", make_block) +
                            chunk("XMP ", "packet") + chunk("ICCP", "profile"))),
              maker + "xmp=packet\nicc=profile\n");
    EXPECT_EQ(found_in(webp(chunk("EXIF", "Exif\0\0"s + make_block))), maker);
    EXPECT_EQ(found_in(chunk("RIFF", "AVI " + chunk("EXIF", make_block))), "");

    const std::string long_block = iptc(std::string(20'000, 'T'));
    for (const std::uint16_t version : {std::uint16_t{1}, std::uint16_t{2}})
        EXPECT_EQ(found_in(psd(
                      whole_resource(1005, "resolution......") + whole_resource(1028, long_block) +
                          whole_resource(1035, "http") + whole_resource(1039, "profile") +
                          whole_resource(1058, make_block) + whole_resource(1060, "packet"),
                      version)),
                  maker + "iptc=" + long_block + "\nxmp=packet\nicc=profile\nurl=http\n");

    EXPECT_EQ(found_in(heic("\0\0\0\6Exif\0\0"s + make_block, "packet", "profprofile")),
              maker + "xmp=packet\nicc=profile\n");
    EXPECT_EQ(found_in(heic(exif_offset + make_block, "", "rICCprofile")), maker + "icc=profile\n");
    EXPECT_EQ(found_in(heic("\0\0\1\0"s + make_block, "packet", "nclxnumbers")), "xmp=packet\n");

    EXPECT_EQ(found_in(jpeg_xl(box("Exif", exif_offset + make_block) + box("brob", "Exif...") +
                               box("xml ", "packet") + box("jxlc", "pixels"))),
              maker + "xmp=packet\n");
    EXPECT_EQ(found_in("\xFF\x0A and bits"), "");
}

TEST(MetadataBlocks, OfRawPhotographs) {
    const std::string exif = build_tiff(ByteOrder::Little, {.first = {ascii(42036, "Lens")}});
    const std::string gps = build_tiff(ByteOrder::Little, {.first = {ascii(1, "N")}});
    const std::string canon = cr3(make_block, exif, gps, "packet");
    EXPECT_EQ(found_in(canon),
              maker.substr(0, maker.size() - 1) +
                  "|##EXIF 42036|Lens|##END 42036;|##GPS 1|N|##END 1;\nxmp=packet\n");
    EXPECT_EQ(metadata_of("GetGPS -SourceUTF8Charset", canon), "|##GPS 1|N|##END 1");

    const std::string picture = jpeg({exif_segment(make_block), packet_segment("packet"),
                                      photoshop(whole_resource(1028, iptc("T")))});
    const std::string of_picture = "iptc=" + iptc("T") + "\nxmp=packet\n";
    EXPECT_EQ(found_in(raf(picture)), maker + of_picture);
    EXPECT_EQ(found_in(mrw(make_block)), maker);
    EXPECT_EQ(found_in(x3f(picture)), maker + of_picture);

    // What the picture in it says comes before the directory around it.
    const std::string inner =
        jpeg({exif_segment(build_tiff(ByteOrder::Little, {.first = {ascii(272, "Inner")}}))});
    std::string panasonic =
        build_tiff(ByteOrder::Little, {.first = {bytes(46, inner), ascii(271, "Maker")}});
    panasonic[2] = 85;
    EXPECT_EQ(found_in(panasonic), "tags=|##EXIF 272|Inner|##END 272;" + maker.substr(5));
    std::string olympus = make_block;
    olympus.replace(2, 2, "RO");
    EXPECT_EQ(found_in(olympus), maker);
}

TEST(MetadataBlocks, RecordsOfCanonBecomeTags) {
    const auto real = [](float number) {
        return little32(std::bit_cast<std::uint32_t>(number));
    };
    const std::string file = crw({{0x080A, "Canon\0Canon EOS D60\0"s},
                                  {0x080B, "Firmware 1.0\0"s},
                                  {0x0810, "Somebody\0"s},
                                  {0x180E, little32(1'016'971'200) + std::string(8, '\0')},
                                  {0x1810, little32(3072) + little32(2048) + little32(0) +
                                               little32(270) + std::string(12, '\0')},
                                  {0x1818, real(-0.5F) + real(6.65625F) + real(5.0F)}});
    const std::string expected =
        "|##EXIF 256|3072|##END 256|##EXIF 257|2048|##END 257|##EXIF 271|Canon|##END 271"
        "|##EXIF 272|Canon EOS D60|##END 272|##EXIF 274|8|##END 274"
        "|##EXIF 305|Firmware 1.0|##END 305|##EXIF 306|2002:03:24 12:00:00|##END 306";
    const std::string exif =
        "|##EXIF 36867|2002:03:24 12:00:00|##END 36867|##EXIF 37377|213/32|##END 37377"
        "|##EXIF 37378|5/1|##END 37378|##EXIF 37380|-1/2|##END 37380"
        "|##EXIF 42032|Somebody|##END 42032";
    const std::string answer = metadata_of("-GetRawExif -Encoding=UTF8 -SourceUTF8Charset", file);
    const std::size_t pointer = answer.find("|##EXIF 34665|");
    ASSERT_NE(pointer, std::string::npos) << answer;
    EXPECT_EQ(answer.substr(0, pointer), expected);
    EXPECT_EQ(answer.substr(answer.find("|##EXIF 36867")), exif);
    EXPECT_EQ(metadata_of("-GetImageDescription", file).substr(0, 47),
              "Height: 2048|Width: 3072|Depth: 24|Horizontal R");
    // A file that says nothing has no tags.
    EXPECT_EQ(found_in(crw({{0x2007, "picture"}})), "");
    EXPECT_EQ(metadata_of("GetExif", crw({{0x2007, "picture"}})), "!-39");
}

TEST(MetadataBlocks, OfBigTiff) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string file = big_tiff(order);
        const std::string tags = metadata_of("GetExif -SourceUTF8Charset", file);
        const std::size_t pointer = tags.find("|##EXIF 34665|");
        ASSERT_NE(pointer, std::string::npos) << tags;
        EXPECT_EQ(tags.substr(0, pointer),
                  "|##EXIF 256|300|##END 256|##EXIF 257|200|##END 257|##EXIF 258|8|##END 258"
                  "|##EXIF 271|Maker|##END 271|##EXIF 272|Its own model|##END 272"
                  "|##EXIF 273|77|##END 273|##EXIF 277|3|##END 277");
        EXPECT_TRUE(tags.ends_with("|##EXIF 34855|400|##END 34855")) << tags;
        EXPECT_EQ(metadata_of("GetXMP", file), "packet");
        EXPECT_EQ(metadata_of("GetIPTC -SourceUTF8Charset", file), "|##IPTC 5|T|##END 5");
        EXPECT_TRUE(metadata_of("-GetImageDescription", file)
                        .starts_with("Height: 200|Width: 300|Depth: 24|Horizontal Res: 72"));
        EXPECT_EQ(found_in(file, {.iptc = true, .xmp = true, .icc = true, .image_url = true}),
                  "iptc=" + iptc("T") + "\nxmp=packet\nicc=a profile\nurl=http\n");
    }
}

TEST(MetadataBlocks, QuestionsAreAnsweredInWhateverContainer) {
    const std::string whole = webp(chunk("EXIF", make_block) + chunk("XMP ", "<x/>"));
    const std::string tags = maker.substr(5, maker.size() - 7);
    EXPECT_EQ(metadata_of("GetExif -SourceUTF8Charset", whole), tags);
    EXPECT_EQ(metadata_of("GetExif GetXMP -SourceUTF8Charset", whole), tags);
    EXPECT_EQ(metadata_of("GetXMP", whole), "<x/>");
    EXPECT_EQ(metadata_of("GetExif GetXMP", webp(chunk("XMP ", "<x/>"))), "<x/>");
    // Codes of what is not there stay as they were.
    const std::string nothing = webp(chunk("VP8L", "pixels"));
    EXPECT_EQ(metadata_of("GetExif", nothing), "!-302");
    EXPECT_EQ(metadata_of("GetXMP", nothing), "!-2026");
    EXPECT_EQ(metadata_of("-GetIccProfileName", nothing), "!-71");
    EXPECT_EQ(metadata_of("GetJPEGComment", whole), "!-71");
    EXPECT_EQ(metadata_of("GetIPTC", whole), "!-2026");
    // A packet that a search finds is still the one that comes first in the file.
    const std::string marked = "<?xpacket begin=\"\" id=\"W\"?><y/><?xpacket end=\"w\"?>";
    EXPECT_EQ(metadata_of("GetExif GetXMP", webp(chunk("none", marked) + chunk("XMP ", "<x/>"))),
              marked);
    EXPECT_EQ(metadata_of("GetExif", "\xFF\x0A and bits"), "!-302");
}

TEST(ImageDescription, OfNewerContainers) {
    const auto lines = [](const std::string& file) {
        const std::string all = metadata_of("-GetImageDescription", file);
        return all.substr(0, all.find("|Data size"));
    };
    const auto described = [](const std::string& height, const std::string& width,
                              const std::string& depth, const std::string& codec,
                              const std::string& count = "1", const std::string& res = "72") {
        return "Height: " + height + "|Width: " + width + "|Depth: " + depth +
               "|Horizontal Res: " + res + "|Vertical Res: " + res + "|Codec name: " + codec +
               "|Image count: " + count;
    };
    const std::string of_webp = "WebP|Codec type: webp";
    EXPECT_EQ(lines(webp(chunk("VP8 ", "\0\0\0\x9D\1\x2A\x90\x41\x2C\1"s))),
              described("300", "400", "24", of_webp));
    const std::uint32_t bits = 399 | 299U << 14U | 1U << 28U;
    EXPECT_EQ(lines(webp(chunk("VP8L", "\x2F" + little32(bits)))),
              described("300", "400", "32", of_webp));
    EXPECT_EQ(lines(webp(chunk("VP8X", "\2\0\0\0\x8F\1\0\x2B\1\0"s) + chunk("ANIM", "") +
                         chunk("ANMF", "1") + chunk("ANMF", "2"))),
              described("300", "400", "24", of_webp, "2"));
    const std::string info = big32(300U << 16U) + big32(0x10001) + big32(300U << 16U) + big32(0);
    EXPECT_EQ(lines(psd(whole_resource(1005, info))),
              described("107", "160", "32", "Photoshop|Codec type: 8BPS", "1", "300"));
    // 1-bit small, 5 bits of height / 8 - 1, ratio 2 (12:10); then all as usual.
    const std::string stream =
        "\xFF\x0A"s + static_cast<char>(1 | 4U << 1U | 2U << 6U) + static_cast<char>(0b10) + "....";
    const std::string of_jpeg_xl = "JPEG XL|Codec type: jxl ";
    EXPECT_EQ(lines(stream), described("40", "48", "24", of_jpeg_xl));
    EXPECT_EQ(lines(jpeg_xl(box("jxlp", big32(0) + stream))),
              described("40", "48", "24", of_jpeg_xl));
    // Not as usual: turned, meant to be shown as a square; 12 bits, halves, and a preview before
    // them.
    for (const auto& [last, depth] :
         {std::pair{'\x10', "36"}, std::pair{'\x0C', "48"}, std::pair{'\x11', "24"}})
        EXPECT_EQ(lines("\xFF\x0A\x89\xEC\x20"s + last + "...."),
                  described("40", "48", depth, of_jpeg_xl));
    const std::string cropped = big32(2) + big16(0x100) + big16(4) + "full" + big16(0x111) +
                                big16(4) + big16(2008) + big16(3016);
    EXPECT_EQ(lines("FUJIFILMCCD-RAW 0201FF000000" + std::string(56, ' ') + big32(0) + big32(0) +
                    big32(100) + big32(28) + cropped),
              described("2008", "3016", "24", "Fujifilm raw|Codec type: raf "));
    const std::string sized =
        build_tiff(ByteOrder::Little,
                   {.first = {{256, FieldType::Short, {6000}}, {257, FieldType::Short, {4000}}}});
    EXPECT_EQ(lines(cr3(sized, "", "", "")),
              described("4000", "6000", "24", "Canon raw|Codec type: CRAW"));
    std::string panasonic =
        build_tiff(ByteOrder::Little, {.first = {{4, FieldType::Short, {6}},
                                                 {5, FieldType::Short, {8}},
                                                 {6, FieldType::Short, {2742}},
                                                 {7, FieldType::Short, {3656}},
                                                 {10, FieldType::Short, {12}}}});
    panasonic[2] = 85;
    EXPECT_EQ(lines(panasonic), described("2736", "3648", "12", "Panasonic raw|Codec type: rw2 "));
    std::string olympus = sized;
    olympus.replace(2, 2, "RO");
    EXPECT_EQ(lines(olympus), described("4000", "6000", "1", "Camera raw|Codec type: raw "));
    for (const std::string& damaged :
         {mrw(make_block), "FOVb"s, webp(chunk("VP8X", "\2")), "8BPS"s, "\xFF\x0A"s, "IIRO1234"s,
          "FUJIFILM"s, "II\x1A\0\0\0HEAPCCDR"s})
        EXPECT_EQ(lines(damaged), "!-4243") << damaged;
}

// One file of each container, with everything that it has room for.
std::map<std::string, std::string> samples() {
    const std::string picture = jpeg({exif_segment(make_block), packet_segment("packet"),
                                      photoshop(whole_resource(1028, iptc("T")))});
    return {
        {"JPEG", picture},
        {"PNG", png({png_chunk("tEXt", png_profile("exif", make_block)),
                     png_chunk("iCCP", "name\0\0"s + deflated("profile")),
                     png_chunk("iTXt", "XML:com.adobe.xmp\0\1\0\0\0"s + deflated("packet"))})},
        {"TIFF",
         build_tiff(ByteOrder::Big, {.first = {ascii(271, "Maker"), bytes(700, "packet")}})},
        {"BigTIFF", big_tiff(ByteOrder::Little)},
        {"WebP", webp(chunk("VP8X", "\2\0\0\0\x8F\1\0\x2B\1\0"s) + chunk("EXIF", make_block))},
        {"PSD", psd(whole_resource(1028, iptc("T")) + whole_resource(1058, make_block))},
        {"HEIC", heic("\0\0\0\6Exif\0\0"s + make_block, "packet", "profprofile")},
        {"JPEG XL", jpeg_xl(box("Exif", "\0\0\0\0"s + make_block) + box("xml ", "packet"))},
        {"CR3", cr3(make_block, make_block, make_block, "packet")},
        {"RAF", raf(picture)},
        {"CRW", crw({{0x080A, "Canon\0D60\0"s}, {0x1818, std::string(12, '\0')}})},
        {"MRW", mrw(make_block)},
        {"X3F", x3f(picture)},
        {"RW2", panasonic_rw2()},
    };
}

// Memory does not fail: whatever is damaged, there is an answer, and it stays within its limits.
TEST(MetadataBlocks, DamageLosesWhatItTouches) {
    for (const auto& [name, file] : samples()) {
        EXPECT_NE(found_in(file), "") << name;
        for (std::size_t i = 0; i < file.size(); ++i) {
            EXPECT_FALSE(found_in(file.substr(0, i)).starts_with("!")) << name << " cut at " << i;
            std::string flipped = file;
            flipped[i] = static_cast<char>(~flipped[i]);
            EXPECT_FALSE(found_in(flipped).starts_with("!")) << name << " flipped at " << i;
        }
        metadata_of("-GetImageDescription", file.substr(0, file.size() / 2));
    }
}

TEST(MetadataBlocks, SourcesThatFailAreTold) {
    for (const auto& [name, file] : samples())
        for (std::uint64_t read = 0;; ++read) {
            WatchedSource source(file);
            source.failing_read = read;
            const auto blocks = find_blocks(Window(source), everything);
            if (source.reads <= read)
                break;
            ASSERT_FALSE(blocks) << name << " at read " << read;
            EXPECT_EQ(blocks.error(), WatchedSource::failure) << name;
        }
}

TEST(MetadataBlocks, NoMoreIsReadThanIsWanted) {
    const std::string image(1'000'000, 'i');
    const std::string exif = "\0\0\0\6Exif\0\0"s + make_block;
    const std::string large = heic(exif, std::string(50'000, 'p'), "profprofile", image);
    const std::size_t boxes = large.size() - image.size() - 50'000 - exif.size();
    const auto bytes_read = [](const std::string& file, const BlockKinds& wanted) {
        CountedBytes source(file);
        EXPECT_TRUE(find_blocks(Window(source), wanted));
        return source.bytes_read;
    };
    // Names are read in pieces, which overlap.
    const std::size_t most = 6 * boxes;
    EXPECT_LT(bytes_read(large, everything), most + 50'000 + exif.size());
    EXPECT_LT(bytes_read(large, {.tags = true}), most);
    EXPECT_LT(
        bytes_read(webp(chunk("VP8L", image) + chunk("XMP ", image) + chunk("EXIF", make_block)),
                   {.tags = true}),
        100U);
    EXPECT_LT(bytes_read(raf(jpeg({exif_segment(make_block)}) + image), everything), 1000U);
    EXPECT_EQ(bytes_read(jpeg({exif_segment(make_block)}), {.comments = true}), 2U + 8U + 4U + 2U);

    // More than there is room for is not read at all.
    EndlessFile endless("RIFF" + little32(0x7FFFFFFF) + "WEBPXMP " + little32(65U << 20U), "x",
                        1U << 30U);
    auto reader = files::BufferedReader::over(endless);
    const auto blocks = find_blocks(Window(*reader), everything);
    ASSERT_TRUE(blocks);
    EXPECT_FALSE(blocks->xmp);
    EXPECT_LT(endless.bytes_read(), 100'000u);
}

TEST(MetadataBlocks, OfRealFiles) {
    const auto files = real_files({"raw", "raw2", "psd", "other", "movie", "movie2", "picture",
                                   "png", "png2", "tiff", "tiff2"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    std::map<std::string, int> with_tags, with_packet, with_profile;
    for (const auto& path : files) {
        std::string kind = path.extension().string();
        std::ranges::transform(kind, kind.begin(), fold_ascii<char>);
        if (kind == ".bmp" || kind == ".ico" || kind == ".mp4")
            continue;
        const std::string file = bytes_of(path);
        BytesInMemory source(file);
        const auto blocks = find_blocks(Window(source), everything);
        ASSERT_TRUE(blocks) << path;
        const std::string told_all = told(*blocks);
        with_tags[kind] += blocks->tags.empty() ? 0 : 1;
        with_packet[kind] += blocks->xmp ? 1 : 0;
        with_profile[kind] += blocks->icc ? 1 : 0;
        EXPECT_FALSE(found_in(file.substr(0, file.size() / 2)).starts_with("!")) << path;
    }
    for (const char* kind : {".cr2", ".cr3", ".dng", ".raf", ".mrw", ".nef", ".rw2", ".heic",
                             ".heif", ".webp", ".psd", ".png"})
        EXPECT_GT(with_tags[kind] + with_packet[kind] + with_profile[kind], 0) << kind;
}

} // namespace
} // namespace vell::metadata
