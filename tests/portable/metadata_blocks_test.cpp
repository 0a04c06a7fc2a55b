// What is found in containers, and what the questions of VlFile_GetMetaData make of it.
#include "src/metadata/containers/metadata_blocks.h"

#include "src/base/md5.h"
#include "src/metadata/reading/tag_reader.h"
#include "tests/portable/camera_builder.h"
#include "tests/portable/container_builder.h"
#include "tests/portable/metadata_cases.h"
#include "tests/portable/picture_files.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <bit>
#include <map>

namespace vell::metadata::metadata_blocks_test {
namespace {

using namespace vell::test;
using enum SegmentMarker;
using formats::Window;

constexpr BlockKinds everything{true, true, true, true, true, true, true};

// A line for each block that is there.
std::string told(const MetadataBlocks& blocks) {
    std::string all = blocks.tags.empty() ? "" : "tags=";
    for (const TagBlock& block : blocks.tags) {
        MetadataText text;
        const ExifReadOptions options{.want_exif = true, .want_gps = true};
        const auto done = read_tags(block.place, block.root, options, TextEncoding::Utf8, text);
        all += shown(text, done) + ";";
    }
    all += blocks.tags.empty() ? "" : "\n";
    const auto add = [&](const char* name, const std::optional<std::string>& value) {
        all += value ? std::string(name) + "=" + *value + "\n" : "";
    };
    add("iptc", blocks.iptc);
    add("xmp", blocks.xmp);
    add("icc", blocks.icc);
    add("url", blocks.image_url);
    for (const std::string& comment : blocks.comments)
        add("comment", comment);
    for (const TextEntry& entry : blocks.texts)
        all += entry.keyword + ":" + entry.text + "\n";
    return all;
}
std::string found_in(const std::string& file, const BlockKinds& wanted = everything) {
    BytesInMemory source(file);
    const auto blocks = find_blocks(Window(source), wanted);
    return blocks ? told(*blocks) : code_text(blocks.error());
}

// Blocks for the files, and the lines that tell of them.
const std::string make_block = tags_of({ascii(271, "Maker")});
const std::string make = tagged("EXIF 271=Maker");
const std::string maker = "tags=" + make + ";\n";
const std::string title = dataset(2, 5, "T");
const std::string title_line = "iptc=" + title + "\n";
const std::string title_resource = whole_resource(1028, title);
const std::string url_resource = whole_resource(1035, "http");
const std::string heif_exif = "\0\0\0\6Exif\0\0"s + make_block;

// A picture in a raw photograph, and the blocks in it.
const std::string picture =
    jpeg({exif_segment(make_block), packet_segment("packet"), test::photoshop(title_resource)});
const std::string of_picture = maker + title_line + "xmp=packet\n";

// Items at the end of the file: tags, a packet; a profile of the first of two images.
std::string heic(const std::string& exif, const std::string& packet, const std::string& colr,
                 const std::string& between = "") {
    const auto with = [&](std::size_t data) {
        const auto entry = [](std::uint16_t id, const std::string& rest) {
            return full_box("infe", big16(id) + big16(0) + rest, 2);
        };
        const auto place = [](std::uint16_t id, std::size_t offset, std::size_t length) {
            return big16(id) + big16(0) + big16(1) + big_size(offset) + big_size(length);
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

std::string big_tiff(ByteOrder order) {
    const auto number = [&](std::uint64_t value, std::size_t size) {
        return integer(value, size, order);
    };
    const auto first = [&](std::uint64_t exif_at) {
        return big_directory(order, 16,
                             {{256, 3, 1, number(300, 2)},
                              {257, 16, 1, number(200, 8)},
                              {258, 3, 3, number(8, 2) + number(8, 2) + number(8, 2)},
                              {271, 2, 6, "Maker\0"s},
                              {272, 2, 13, "Its own model"},
                              {273, 16, 2, number(77, 8) + number(88, 8)},
                              {277, 3, 1, number(3, 2)},
                              {700, 1, 6, "packet"},
                              {33723, 7, title.size(), title},
                              {34377, 7, url_resource.size(), url_resource},
                              {34665, 18, 1, number(exif_at, 8)},
                              {34675, 7, 9, "a profile"}});
    };
    const std::uint64_t exif_at = 16 + first(0).size();
    return big_tiff_header(order) + first(exif_at) +
           big_directory(order, exif_at, {{34855, 3, 1, number(400, 2)}});
}

std::string extension(const std::string& name, std::size_t full, std::size_t offset,
                      const std::string& data) {
    return segment(App1, "http://ns.adobe.com/xmp/extension/\0"s + name + big_size(full) +
                             big_size(offset) + data);
}

TEST(MetadataBlocks, OfJpeg) {
    const std::string profile(300, 'p');
    const std::string file = jpeg({segment(App13, "something else"), exif_segment(make_block),
                                   exif_segment(tags_of({ascii(271, "Other")}, ByteOrder::Big)),
                                   packet_segment("packet\0\0"s), packet_segment("another"),
                                   profile_segment(1, 2, profile.substr(0, 200)),
                                   profile_segment(2, 2, profile.substr(200)),
                                   // Resources that go on in the next segment.
                                   test::photoshop(title_resource.substr(0, 15)),
                                   test::photoshop(title_resource.substr(15) + url_resource),
                                   segment(Com, "one"), segment(Com, "two")});
    EXPECT_EQ(found_in(file), maker + title_line + "xmp=packet\nicc=" + profile +
                                  "\nurl=http\ncomment=one\ncomment=two\n");
    EXPECT_EQ(found_in(file, {}), "");
    EXPECT_EQ(found_in(file, {.image_url = true}), "url=http\n");
    // A profile that lacks a chunk loses nothing else.
    EXPECT_EQ(found_in(jpeg({exif_segment(make_block), profile_segment(1, 2, profile)})), maker);
}

TEST(MetadataBlocks, OfTiff) {
    const auto tiff = [](const TiffFields& fields) {
        return tags_of(fields, ByteOrder::Big);
    };
    const std::string resources = whole_resource(1028, dataset(2, 5, "R")) + url_resource;
    EXPECT_EQ(found_in(tiff({ascii(271, "Maker"), bytes(700, "packet\0"s), undefined(33723, title),
                             bytes(34377, resources), undefined(34675, "profile")})),
              maker + title_line + "xmp=packet\nicc=profile\nurl=http\n");
    EXPECT_EQ(found_in(tiff({bytes(34377, resources)}), {.iptc = true}),
              "iptc=" + dataset(2, 5, "R") + "\n");
    EXPECT_EQ(found_in(""), "");
    EXPECT_EQ(found_in("%PDF-1.7 and more"), "");
}

TEST(MetadataBlocks, ExtendedPacketsAreJoinedWhenTheyAreWhole) {
    const std::string start = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='r'";
    const std::string end = "</rdf:RDF></x:xmpmeta>";
    const std::string more = " xmlns:g=\"g/\"", inner = "<rdf:Description g:a='1'/>";
    const std::string rest = start + more + ">" + inner + end;
    const std::string name = hexadecimal(md5(rest));
    const std::string attribute = "<rdf:Description xmpNote:HasExtendedXMP=\"" + name + "\"/>";
    const std::string element = "<rdf:Description><xmpNote:HasExtendedXMP>" + name +
                                "</xmpNote:HasExtendedXMP></rdf:Description>";
    const std::string first = extension(name, rest.size(), 0, rest.substr(0, 40));
    const std::string second = extension(name, rest.size(), 40, rest.substr(40));
    const std::string main = start + ">" + attribute + end;
    const std::string clashing = start + " xmlns:g='other/'>" + attribute + end;
    const std::string packet = packet_segment(main);
    const struct {
        const char* what;
        std::string file;
        std::string expected;
    } cases[] = {
        {"an attribute", jpeg({packet, first, second}),
         start + more + ">" + attribute + inner + end},
        {"an element, and parts in another order",
         jpeg({second, packet_segment(start + ">" + element + end), first}),
         start + more + ">" + element + inner + end},
        {"nothing more", jpeg({packet}), main},
        {"a gap at the end", jpeg({packet, first}), main},
        {"a gap at the start", jpeg({packet, second}), main},
        {"a part twice", jpeg({packet, first, first, second}), main},
        {"another MD5",
         jpeg({packet, first, std::string(second).replace(second.find("'1'"), 3, "'2'")}), main},
        {"another packet's", jpeg({packet, extension(std::string(32, 'A'), rest.size(), 0, rest)}),
         main},
        {"a prefix that means something else in the packet",
         jpeg({packet_segment(clashing), first, second}), clashing},
    };
    for (const auto& [what, file, expected] : cases)
        EXPECT_EQ(found_in(file, {.xmp = true}), "xmp=" + expected + "\n") << what;
}

TEST(MetadataBlocks, OfPng) {
    const std::string file =
        png({png_chunk("tEXt", "K\xE4se\0caf\xE9"s), png_chunk("zTXt", "Z\0\0"s + deflated("zz")),
             png_chunk("iTXt", "I\0\0\0de\0Wort\0\xC3\xA4"s),
             png_chunk("iTXt", "J\0\1\0\0\0"s + deflated("jj")),
             png_chunk("iTXt", png_deflated_packet + deflated("packet")),
             png_chunk("iCCP", "name\0\0"s + deflated("profile")),
             png_chunk("tEXt", png_profile("iptc", title_resource + url_resource)),
             png_chunk("tEXt", png_profile("xmp", "less")), png_chunk("eXIf", make_block)});
    EXPECT_EQ(found_in(file), maker + title_line +
                                  "xmp=packet\nicc=profile\nurl=http\nK\xC3\xA4se:caf\xC3\xA9\n"
                                  "Z:zz\nI:\xC3\xA4\nJ:jj\n");

    const std::string exif = "Exif\0\0"s + make_block;
    const std::pair<std::string, std::string> profiles[] = {
        {png_chunk("tEXt", png_profile("exif", exif)), maker},
        {png_chunk("zTXt", deflated_png_profile("exif", make_block)), maker},
        {png_chunk("zTXt", deflated_png_profile("APP1", exif)), maker},
        {png_chunk("tEXt", png_profile("APP1", packet_identifier + "packet")), "xmp=packet\n"},
        {png_chunk("zTXt", deflated_png_profile("xmp", "packet")), "xmp=packet\n"},
        {png_chunk("zTXt", deflated_png_profile("icc", "profile")), "icc=profile\n"},
        {png_chunk("tEXt", png_profile("iptc", title)), title_line},
        {png_chunk("tEXt", png_profile("8bim", title_resource)), title_line},
        // Digits that end before the length says.
        {png_chunk("tEXt", "Raw profile type xmp\0\nxmp\n 9\n4142\n"s), ""},
        // What expands to more than there is room for loses itself alone.
        {png_chunk("iCCP", "name\0\0"s + deflated(std::string(longest_blocks + 1, 'x'))) +
             png_chunk("eXIf", make_block),
         maker},
    };
    for (const auto& [chunks, expected] : profiles)
        EXPECT_EQ(found_in(png({chunks})), expected) << chunks.substr(0, 100);
}

TEST(MetadataBlocks, OfGif) {
    const std::string packet = "<?xpacket a packet of some length, longer than it seems?>";
    EXPECT_EQ(found_in(gif("\x21\xFE\3one\3two\0"s + gif_packet(packet) +
                           "\x21\xFF\x0BICCRGBG1012\3pro\4file\0"s + "\x21\xF9\4\0\0\0\0\0"s +
                           "\x2C\0\0\0\0\1\0\1\0\0\2\2\1\1\0"s + "\x21\xFE\1x\0"s)),
              "xmp=" + packet + "\nicc=profile\ncomment=onetwo\ncomment=x\n");
}

TEST(MetadataBlocks, OfFilesInChunksAndBoxes) {
    const std::string exif = riff_chunk("EXIF", make_block);
    const std::string long_block = dataset(2, 5, std::string(20'000, 'T'));
    const std::string resources = whole_resource(1005, "resolution......") +
                                  whole_resource(1028, long_block) + url_resource +
                                  whole_resource(1039, "profile") +
                                  whole_resource(1058, make_block) + whole_resource(1060, "packet");
    const std::string of_resources =
        maker + "iptc=" + long_block + "\nxmp=packet\nicc=profile\nurl=http\n";
    const std::string box_of_tags = "\0\0\0\0"s + make_block;
    const std::pair<std::string, std::string> cases[] = {
        {webp(riff_chunk("VP8L", "pixels") + exif + riff_chunk("XMP ", "packet") +
              riff_chunk("ICCP", "profile")),
         maker + "xmp=packet\nicc=profile\n"},
        {webp(riff_chunk("EXIF", "Exif\0\0"s + make_block)), maker},
        {riff_chunk("RIFF", "AVI " + exif), ""},
        {psd(resources), of_resources},
        {psd(resources, 2), of_resources},
        {heic(heif_exif, "packet", "profprofile"), maker + "xmp=packet\nicc=profile\n"},
        {heic(box_of_tags, "", "rICCprofile"), maker + "icc=profile\n"},
        {heic("\0\0\1\0"s + make_block, "packet", "nclxnumbers"), "xmp=packet\n"},
        {jpeg_xl(box("Exif", box_of_tags) + box("brob", "Exif...") + box("xml ", "packet") +
                 box("jxlc", "pixels")),
         maker + "xmp=packet\n"},
        {"\xFF\x0A and bits", ""},
    };
    for (const auto& [file, expected] : cases)
        EXPECT_EQ(found_in(file), expected) << file.substr(0, 100);
}

TEST(MetadataBlocks, OfRawPhotographs) {
    const std::string exif = tags_of({ascii(42036, "Lens")});
    const std::string gps = tags_of({ascii(1, "N")});
    const std::string canon = cr3(make_block, exif, gps, "packet");
    EXPECT_EQ(found_in(canon), "tags=" + make + ";" + tagged("EXIF 42036=Lens") + ";" +
                                   tagged("GPS 1=N") + ";\nxmp=packet\n");
    EXPECT_EQ(metadata_of("GetGPS -SourceUTF8Charset", canon), tagged("GPS 1=N"));
    EXPECT_EQ(found_in(raf(picture)), of_picture);
    EXPECT_EQ(found_in(mrw(make_block)), maker);
    EXPECT_EQ(found_in(x3f(picture)), of_picture);

    // What the picture in it says comes before the directory around it.
    const std::string inner = jpeg({exif_segment(tags_of({ascii(272, "Inner")}))});
    std::string panasonic = tags_of({bytes(46, inner), ascii(271, "Maker")});
    panasonic[2] = 85;
    EXPECT_EQ(found_in(panasonic), "tags=" + tagged("EXIF 272=Inner") + ";" + make + ";\n");
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
    const std::string answer = metadata_of("-GetRawExif -Encoding=UTF8 -SourceUTF8Charset", file);
    EXPECT_TRUE(answer.starts_with(
        tagged("EXIF 256=3072; EXIF 257=2048; EXIF 271=Canon; EXIF 272=Canon EOS D60; EXIF 274=8; "
               "EXIF 305=Firmware 1.0; EXIF 306=2002:03:24 12:00:00") +
        "|##EXIF 34665|"))
        << answer;
    EXPECT_EQ(answer.substr(answer.find("|##EXIF 36867")),
              tagged("EXIF 36867=2002:03:24 12:00:00; EXIF 37377=213/32; EXIF 37378=5/1; "
                     "EXIF 37380=-1/2; EXIF 42032=Somebody"));
    EXPECT_EQ(metadata_of("-GetImageDescription", file).substr(0, 47),
              "Height: 2048|Width: 3072|Depth: 24|Horizontal R");
    const std::string size = little32(3072) + little32(2048) + little32(0);
    for (const auto& [degrees, orientation] :
         {std::pair(0, "1"), {90, "6"}, {180, "3"}, {-90, "8"}, {450, "6"}, {45, "1"}}) {
        const std::string turned = little32(static_cast<std::uint32_t>(degrees));
        const std::string tags =
            metadata_of("GetExif", crw({{0x1810, size + turned + std::string(12, '\0')}}));
        EXPECT_TRUE(tags.ends_with(tagged("EXIF 274="s + orientation))) << degrees << tags;
    }
    // A file that says nothing has no tags.
    EXPECT_EQ(found_in(crw({{0x2007, "picture"}})), "");
    EXPECT_EQ(metadata_of("GetExif", crw({{0x2007, "picture"}})), "!-39");
}

TEST(MetadataBlocks, OfBigTiff) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string file = big_tiff(order);
        const std::string tags = metadata_of("GetExif -SourceUTF8Charset", file);
        EXPECT_TRUE(
            tags.starts_with(tagged("EXIF 256=300; EXIF 257=200; EXIF 258=8; EXIF 271=Maker; "
                                    "EXIF 272=Its own model; EXIF 273=77; EXIF 277=3") +
                             "|##EXIF 34665|"))
            << tags;
        EXPECT_TRUE(tags.ends_with(tagged("EXIF 34855=400"))) << tags;
        EXPECT_TRUE(metadata_of("-GetImageDescription", file)
                        .starts_with("Height: 200|Width: 300|Depth: 24|Horizontal Res: 72"));
        EXPECT_EQ(found_in(file, {.iptc = true, .xmp = true, .icc = true, .image_url = true}),
                  title_line + "xmp=packet\nicc=a profile\nurl=http\n");
        expect_metadata(
            {{"GetXMP", file, "packet"}, {"GetIPTC -SourceUTF8Charset", file, tagged("IPTC 5=T")}});
    }
}

TEST(MetadataBlocks, QuestionsAreAnsweredInWhateverContainer) {
    const std::string packet = riff_chunk("XMP ", "<x/>");
    const std::string whole = webp(riff_chunk("EXIF", make_block) + packet);
    const std::string nothing = webp(riff_chunk("VP8L", "pixels"));
    const std::string marked = "<?xpacket begin=\"\" id=\"W\"?><y/><?xpacket end=\"w\"?>";
    expect_metadata({
        {"GetExif -SourceUTF8Charset", whole, make},
        {"GetExif GetXMP -SourceUTF8Charset", whole, make},
        {"GetXMP", whole, "<x/>"},
        {"GetExif GetXMP", webp(packet), "<x/>"},
        // Codes of what is not there stay as they were.
        {"GetExif", nothing, "!-302"},
        {"GetXMP", nothing, "!-2026"},
        {"-GetIccProfileName", nothing, "!-71"},
        {"GetJPEGComment", whole, "!-71"},
        {"GetIPTC", whole, "!-2026"},
        {"GetExif", "\xFF\x0A and bits", "!-302"},
        // A packet that a search finds is still the one that comes first in the file.
        {"GetExif GetXMP", webp(riff_chunk("none", marked) + packet), marked},
    });
}

// One file of each container, with everything that it has room for.
std::map<std::string, std::string> samples() {
    return {
        {"JPEG", picture},
        {"PNG", png({png_chunk("tEXt", png_profile("exif", make_block)),
                     png_chunk("iCCP", "name\0\0"s + deflated("profile")),
                     png_chunk("iTXt", png_deflated_packet + deflated("packet"))})},
        {"TIFF", tags_of({ascii(271, "Maker"), bytes(700, "packet")}, ByteOrder::Big)},
        {"BigTIFF", big_tiff(ByteOrder::Little)},
        {"WebP",
         webp(riff_chunk("VP8X", "\2\0\0\0\x8F\1\0\x2B\1\0"s) + riff_chunk("EXIF", make_block))},
        {"PSD", psd(title_resource + whole_resource(1058, make_block))},
        {"HEIC", heic(heif_exif, "packet", "profprofile")},
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
    const std::string large = heic(heif_exif, std::string(50'000, 'p'), "profprofile", image);
    const std::size_t boxes = large.size() - image.size() - 50'000 - heif_exif.size();
    const auto bytes_read = [](const std::string& file, const BlockKinds& wanted) {
        CountedBytes source(file);
        EXPECT_TRUE(find_blocks(Window(source), wanted));
        return source.bytes_read;
    };
    // Names are read in pieces, which overlap.
    const std::size_t most = 6 * boxes;
    EXPECT_LT(bytes_read(large, everything), most + 50'000 + heif_exif.size());
    EXPECT_LT(bytes_read(large, {.tags = true}), most);
    const std::string chunks = riff_chunk("VP8L", image) + riff_chunk("XMP ", image);
    EXPECT_LT(bytes_read(webp(chunks + riff_chunk("EXIF", make_block)), {.tags = true}), 100U);
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

} // namespace
} // namespace vell::metadata::metadata_blocks_test
