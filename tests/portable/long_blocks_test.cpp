// Blocks that are longer than any that is held in memory, and the memory that the longest ones
// take.
#include "src/formats/jpeg/icc_chunks.h"
#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/values/file_values.h"
#include "src/metadata/writing/block_place.h"
#include "src/metadata/writing/photoshop_block.h"
#include "src/pictures/colour.h"
#include "src/pictures/inside/orientation.h"
#include "src/pictures/inside/previews.h"
#include "src/structure/file_structure.h"
#include "tests/portable/camera_builder.h"
#include "tests/portable/container_builder.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/held_memory.h"
#include "tests/portable/metadata_cases.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace vell::metadata::long_blocks_test {
namespace {

using namespace vell::test;

constexpr std::uint32_t three_gigabytes = 3U << 30U;
constexpr std::uint64_t four_gigabytes = 1ULL << 32U;
// What is read and held of a file whose blocks are too long: headers, and a few buffers.
constexpr std::uint64_t little = 1U << 18U;

std::string png_with(const std::string& type, const std::string& data) {
    return png({png_chunk(type, data, three_gigabytes)});
}
std::string tiff_with(std::uint16_t tag, FieldType type) {
    return tags_of({{tag, type, {}, {}, three_gigabytes, 4096}});
}
std::string webp_with(const std::string& type) {
    return "RIFF" + little32(0xFFFF'FFF0) + "WEBP" + type + little32(three_gigabytes);
}
std::string psd_with(std::uint16_t id) {
    return psd(resource(id, "", "", three_gigabytes), 1, three_gigabytes + 100);
}
// One tag, whose value stands far behind.
std::string big_tiff_with(std::uint16_t tag) {
    constexpr auto order = ByteOrder::Little;
    return big_tiff_header(order) +
           big_directory(order, 16, {{tag, 7, three_gigabytes, integer(4096, 8, order)}});
}
// Tags of music, whose lengths have seven bits in each byte: 255 MiB, all for one frame.
std::string id3_with(const std::string& frame) {
    return "ID3\4\0\0"s + "\x7F\x7F\x7F\x7F" + frame + "\x7E\x7F\x7F\x7F" + "\0\0"s;
}
std::string flac_with(char type) {
    return "fLaC"s + static_cast<char>(type | '\x80') + "\xFF\xFF\xFF" + big32(3) +
           big32(three_gigabytes);
}
std::string mrw_with(const std::string& block) {
    return "\0MRM"s + big32(three_gigabytes + 8) + block + big32(three_gigabytes);
}
constexpr BlockKinds everything{true, true, true, true, true, true, true};
const std::string packet_type = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";

// What is done with a file that goes on for gigabytes takes next to nothing of it, and of memory.
template <typename Action>
void expect_little(const std::string& start, Action action) {
    EndlessFile file(start, "x", four_gigabytes);
    const auto held = most_memory_held([&] { action(file); });
    EXPECT_LT(file.bytes_read(), little) << start.substr(0, 100);
    EXPECT_LT(held.value_or(0), little) << start.substr(0, 100);
}

TEST(LongBlocks, AreRefusedUnread) {
    const std::vector<MetadataCase> cases = {
        {"GetExif", png_with("eXIf", ""), "!-207"},
        {"GetXMP", png_with("iTXt", png_packet), "!-207"},
        {"-GetTextChunkFromPNG", png_with("tEXt", "Title\0"s), "!-207"},
        {"GetXMP", tiff_with(700, FieldType::Byte), "!-207"},
        {"GetIPTC", tiff_with(33723, FieldType::Undefined), "!-207"},
        {"-GetIccProfileDescription", tiff_with(34675, FieldType::Undefined), "!-207"},
        {"GetExif", tiff_with(271, FieldType::Undefined),
         tagged("EXIF 271=<CORRUPT EXIF TAG>") + "!-4249"},
    };
    for (const MetadataCase& each : cases)
        expect_little(each.file, [&](files::File& file) {
            EXPECT_EQ(metadata_of(each.switches, file), each.expected) << each.switches;
        });
}

TEST(LongBlocks, AreLeftOutOfWhatIsFound) {
    const std::string packet_box = big32(0xC000'0000) + "xml ";
    for (const std::string& start : {png_with("eXIf", ""),
                                     png_with("iTXt", png_packet),
                                     png_with("iCCP", "name\0\0"s),
                                     png_with("zTXt", "Raw profile type iptc\0\0"s),
                                     tiff_with(700, FieldType::Byte),
                                     tiff_with(34377, FieldType::Undefined),
                                     webp_with("XMP "),
                                     webp_with("ICCP"),
                                     psd_with(0x0404),
                                     psd_with(0x0424),
                                     psd_with(0x040F),
                                     file_type + packet_box,
                                     file_type + big32(0xC000'0000) + "uuid" + packet_type,
                                     big_tiff_with(700),
                                     big_tiff_with(33723),
                                     big_tiff_with(34377),
                                     big_tiff_with(34675),
                                     id3_with("APIC"),
                                     id3_with("GEOB"),
                                     flac_with(6),
                                     flac_with(4),
                                     "FUJIFILM" + std::string(76, ' ') + big32(100) + big32(~0U),
                                     mrw_with("\0TTW"s),
                                     mrw_with("\0PRD"s),
                                     jpeg_xl(packet_box)})
        expect_little(start, [&](files::File& file) {
            auto reader = files::BufferedReader::over(file);
            const auto blocks = find_blocks(formats::Window(*reader), everything);
            EXPECT_TRUE(blocks && !blocks->xmp && !blocks->icc && !blocks->iptc &&
                        blocks->texts.empty());
            EXPECT_TRUE(pictures::orientation_of(*reader));
            EXPECT_TRUE(pictures::find_pictures(*reader));
            params::ComposedText text;
            static_cast<void>(structure::append_boxes(*reader, {}, text));
        });
}

TEST(LongBlocks, AreNotWrittenAnew) {
    const std::pair<BlockKind, std::string> cases[] = {
        {BlockKind::Exif, png_with("eXIf", "")},
        {BlockKind::Xmp, png_with("iTXt", png_packet)},
        {BlockKind::Exif, png_with("tEXt", "Raw profile type exif\0"s)},
        {BlockKind::Comment, png_with("zTXt", "Comment\0\0"s)},
        {BlockKind::Exif, webp_with("EXIF")},
        {BlockKind::Xmp, webp_with("XMP ")},
    };
    for (const auto& [kind, start] : cases)
        expect_little(start, [kind = kind](files::File& file) {
            auto reader = files::BufferedReader::over(file);
            const auto place = find_block_place(*reader, {kind, "<x/>", u"picture"});
            ASSERT_FALSE(place);
            EXPECT_EQ(place.error(), ErrorCode::ResourceTooLarge);
        });
}

// What a file of one long block holds: the block, and a copy of it or the text that it becomes.
struct LongFile {
    const char* switches;
    std::string bytes;
    std::size_t block = 0; // where it is not as long as the others
};
constexpr std::size_t block_size = 2U << 20U;
constexpr std::size_t buffers = 1U << 17U; // of files, and of the library that reads XML

// Bytes of ASCII that compress by little.
std::string noise(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>('!' + (state >> 24U) % 90);
    }
    return bytes;
}
std::string with_start(const std::string& start, std::string file) {
    return file.replace(0, start.size(), start);
}
std::string packet_of(const std::string& title) {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
           "xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:title>" +
           title + "</dc:title></rdf:Description></rdf:RDF></x:xmpmeta>";
}

// A JPEG file of the profile, in as many segments as it takes.
std::string in_segments(const std::string& profile) {
    constexpr std::size_t longest = 65'000;
    const std::size_t count = (profile.size() + longest - 1) / longest;
    std::string segments;
    for (std::size_t i = 0; i < count; ++i)
        segments += profile_segment(i + 1, count, profile.substr(i * longest, longest));
    return jpeg({segments});
}

std::vector<LongFile> long_files() {
    const std::string text = noise(block_size);
    const std::string latin(block_size, '\xE4');
    std::string lines = text;
    for (std::size_t at = 80; at < lines.size(); at += 80)
        lines[at] = '\n';
    std::ranges::replace_if(
        lines, [](char c) { return c == '<' || c == '&'; }, 'x');
    const std::string packet = packet_of(lines);
    std::string datasets;
    while (datasets.size() < block_size)
        datasets += dataset(2, 120, text.substr(datasets.size() / 2, 32'760));
    const auto tiff = [](TiffField field) {
        return tags_of({std::move(field)});
    };
    const std::string tags = tiff(ascii(271, text));
    const std::string long_profile = in_segments(text);
    const TiffField rationals{318, FieldType::Rational, {}, text, block_size / 8};
    return {
        {"-GetTextChunkFromPNG", png({png_chunk("tEXt", "Title\0"s + text)})},
        {"GetExif", png({png_chunk("eXIf", tags)})},
        {"GetXMP", png({png_chunk("iTXt", png_packet + packet)})},
        {"GetXMP", png({png_chunk("iTXt", png_deflated_packet + deflated(text))})},
        {"GetXMP", png({png_chunk("zTXt", "Title\0\0"s + deflated(text))})},
        // Its text in UTF-8 is the longer one.
        {"GetXMP", png({png_chunk("tEXt", "Title\0"s + latin)}), 2 * block_size},
        {"GetXMP", png({png_chunk("iCCP", "Title\0\0"s + deflated(text))})},
        {"GetXMP", png({png_chunk("tEXt", png_profile("icc", text))}), 2 * block_size},
        {"GetXMP", png({png_chunk("zTXt", deflated_png_profile("icc", text))}), 2 * block_size},
        {"GetExif", tags},
        {"GetExif", tiff(undefined(37510, text))},
        {"GetExif", tiff(bytes(40091, text))},
        {"GetExif", tiff(rationals)},
        {"GetXMP", tiff(bytes(700, packet))},
        {"GetIPTC", tiff(undefined(33723, datasets)), datasets.size()},
        {"-GetIccProfileDescription", tiff(undefined(34675, text))},
        {"GetXMP", webp(riff_chunk("XMP ", packet))},
        {"GetExif", webp(riff_chunk("EXIF", tags))},
        {"GetXMP", gif("\x21\xFE" + sub_blocks(text))},
        {"GetXMP", gif("\x21\xFF\x0BICCRGBG1012" + sub_blocks(text))},
        {"GetXMP", gif(gif_packet(packet))},
        {"GetExif", cr3(tags, "", "", packet), 2 * block_size},
        {"GetXMP", cr3("", "", "", packet)},
        {"GetExif", raf(long_profile)},
        {"GetExif", x3f(long_profile)},
        {"GetExif", with_start("IIRO", tags)},
        {"GetExif", with_start("IIU\0"s, tags)},
        {"GetExif", crw({{0x080B, text}, {0x0810, text}})},
        {"GetExif", mrw(tags)},
        {"GetExif",
         box("ftyp", "qt  ") +
             box("moov", box("cmov", box("dcom", "zlib") +
                                         box("cmvd", big32(block_size) + deflated(text)))),
         2 * block_size},
    };
}

TEST(LongBlocks, AreHeldTwiceAtMost) {
    const TextDecoder decoder = [](std::string_view bytes, TextEncoding) {
        return std::string(bytes);
    };
    const std::vector<LongFile> files = long_files();
    for (std::size_t i = 0; i < files.size(); ++i) {
        const LongFile& each = files[i];
        const auto file = files::memory_file(each.bytes);
        auto reader = files::BufferedReader::over(*file);
        const auto request = metadata_request_of(params::SwitchSet(each.switches));
        ASSERT_TRUE(reader && request);
        const std::size_t twice = 2 * std::max(each.block, block_size) + buffers;
        const auto as_text = most_memory_held([&] {
            MetadataText text;
            static_cast<void>(read_image_metadata(*reader, *request, text));
        });
        EXPECT_LT(as_text.value_or(0), twice) << each.switches << " of file " << i;
        const auto as_values = most_memory_held([&] {
            EXPECT_TRUE(read_values(*reader, ValueKinds::all(), TextEncoding::Native, decoder));
        });
        EXPECT_LT(as_values.value_or(0), twice) << "values of file " << i;
        FakeSystem system;
        system.add(u"C:\\a", each.bytes);
        FakeCall call({u"-Verbose", u"C:\\a"});
        const auto as_structure = most_memory_held(
            [&] { static_cast<void>(structure::get_file_structure(call, system)); });
        EXPECT_LT(as_structure.value_or(0), twice) << "structure of file " << i;
    }
}

// A file of the text, and nothing of what is written.
class Unwritten final : public EndlessFile {
  public:
    explicit Unwritten(const std::string& bytes) : EndlessFile(bytes, "x", bytes.size()) {}
    Result<void> write(std::string_view bytes) override {
        written += bytes.size();
        return {};
    }

    std::uint64_t written = 0;
};

TEST(LongBlocks, AreHeldTwiceAtMostWhereOthersAreWritten) {
    const std::string text = noise(block_size);
    const auto tiff = [](std::vector<TiffField> fields) {
        fields.insert(fields.begin(), longs(256, {1}));
        return tags_of(fields, ByteOrder::Big);
    };
    const std::string packet = packet_of("new");
    const struct {
        BlockKind kind;
        std::string file;
        std::string text;
        std::uint64_t growth; // about
    } cases[] = {
        {BlockKind::Xmp, tiff({undefined(34675, text)}), packet, block_size},
        {BlockKind::Xmp, tiff({bytes(700, text)}), packet, 0},
        {BlockKind::Xmp, tiff({bytes(700, "old"), undefined(50706, "1400")}), packet_of(text),
         block_size},
        {BlockKind::Iptc, tiff({undefined(33723, text)}), dataset(2, 5, "T"), 0},
        {BlockKind::Iptc, tiff({bytes(34377, resource(1028, text))}), dataset(2, 5, "T"), 0},
        {BlockKind::ImageUrl, tiff({bytes(34377, resource(1036, text))}), "url", block_size},
        {BlockKind::Exif, tiff({ascii(271, text), ascii(272, "M")}), "##EXIF 272\rModel\r##END 272",
         0},
        {BlockKind::Exif, tiff({ascii(271, text)}), "##EXIF 271\rMaker\r##END 271", 0},
        {BlockKind::Exif, tiff({undefined(37510, text)}), "##EXIF 37510\rNote\r##END 37510", 0},
    };
    for (const auto& each : cases) {
        Unwritten file(each.file), copy("");
        auto reader = files::BufferedReader::over(file);
        FakeCall call({});
        const TextStore store(call, std::nullopt);
        const auto sections = parse_tagged_text(each.text);
        std::string block = each.kind == BlockKind::ImageUrl ? "" : each.text;
        const auto held = most_memory_held([&] {
            const auto place = find_block_place(*reader, {each.kind, each.text, u"a.dng"});
            ASSERT_TRUE(place) << each.text.substr(0, 100) << number(place.error());
            if (each.kind == BlockKind::Exif) {
                ASSERT_TRUE((*place)->put_tags(*reader, *sections, MakerNote::Keep, store));
            } else {
                if (each.kind == BlockKind::ImageUrl)
                    block = with_resource((*place)->content(), photoshop::ResourceId::ImageUrl,
                                          each.text)
                                .value();
                ASSERT_TRUE((*place)->put(std::move(block)));
            }
            ASSERT_TRUE(file.seek(files::SeekFrom::Start, 0));
            ASSERT_TRUE((*place)->copy(file, copy));
        });
        const bool is_new = each.text.size() > block_size;
        EXPECT_LT(held.value_or(0), (is_new ? 1 : 2) * block_size + 3 * buffers)
            << each.text.substr(0, 100);
        EXPECT_NEAR(static_cast<double>(copy.written),
                    static_cast<double>(each.file.size() + each.growth), 4096)
            << each.text.substr(0, 100);
    }
}

TEST(LongBlocks, ProfilesOfThumbnailsAreHeldTwiceAtMost) {
    const pictures::PictureLayout layout{.width = 1, .height = 1};
    std::string profile = pictures::gamma_profile(layout.model, 1.8, pictures::srgb_primaries);
    profile += noise(block_size);
    profile.replace(0, 4, big_size(profile.size()));
    const std::string file = in_segments(profile);
    BytesInMemory source(file);
    const auto held = most_memory_held([&] {
        const auto read = formats::jpeg::read_profile(formats::Window(source), longest_blocks);
        ASSERT_TRUE(read && *read == profile);
        const pictures::ToSrgb to_srgb(layout, *read);
    });
    EXPECT_LT(held.value_or(0), 2 * block_size + 3 * buffers);
}

// A gap between segments, fill bytes or markers without end are no stream of JPEG.
TEST(LongBlocks, GapsInJpegAreNotReadForGigabytes) {
    constexpr std::uint64_t most = 16U << 20U;
    for (const std::string& pattern : {"x"s, "\xFF"s, "\xFF\xD0"s, "\xFF\xE1\0\2"s}) {
        for (const std::string& start : {"\xFF\xD8"s, "FUJIFILM" + std::string(76, ' ') +
                                                          big32(92) + big32(~0U) + "\xFF\xD8"s}) {
            EndlessFile file(start, pattern, four_gigabytes);
            auto reader = files::BufferedReader::over(file);
            EXPECT_TRUE(find_blocks(formats::Window(*reader), everything));
            EXPECT_TRUE(pictures::orientation_of(*reader));
            EXPECT_LT(file.bytes_read(), most) << start << pattern;
        }
    }
}

// What does not expand costs time: behind some of it nothing is expanded any more.
TEST(LongBlocks, ThatDoNotExpandAreTriedAFewTimes) {
    const auto text = [](const std::string& compressed) {
        return png_chunk("zTXt", "Title\0\0"s + compressed);
    };
    const std::string bomb = text(deflated(std::string(longest_blocks + 1, 'x')));
    const auto has_text = [&](int bombs) {
        std::string chunks;
        for (int i = 0; i < bombs; ++i)
            chunks += bomb;
        const std::string file = png({chunks, text(deflated("found"))});
        BytesInMemory source(file);
        const auto blocks = find_blocks(formats::Window(source), everything);
        return blocks && !blocks->texts.empty();
    };
    EXPECT_TRUE(has_text(3));
    EXPECT_FALSE(has_text(5));
}

} // namespace
} // namespace vell::metadata::long_blocks_test
