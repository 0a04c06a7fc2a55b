// Tags of blocks made here, read by both readers.
#include "src/formats/recognition.h"
#include "src/metadata/reading/gps_decimal.h"
#include "src/metadata/reading/tag_reader.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata {
namespace {

using namespace vell::test;
using namespace std::string_literals;
using enum FieldType;

constexpr ExifReadOptions exif{.want_exif = true};
constexpr ExifReadOptions everything{.want_exif = true, .want_gps = true};
constexpr ExifReadOptions raw{.want_exif = true, .want_gps = true, .raw_values = true};
constexpr ExifReadOptions gps{.want_gps = true};
constexpr ExifReadOptions decimal{.want_gps = true, .decimal_gps = true};

std::string from_block(std::string_view block, const ExifReadOptions& options,
                       TextEncoding source = TextEncoding::Utf8) {
    // Read beyond it: a finding of the sanitizer.
    const std::vector<char> exact(block.begin(), block.end());
    MetadataText text;
    const auto done = read_tags({exact.data(), exact.size()}, options, source, text);
    return shown(text, done);
}

// The header stands in the midst of the file.
std::string from_file(std::string_view block, const ExifReadOptions& options,
                      TextEncoding source = TextEncoding::Utf8) {
    const auto file = files::memory_file("before" + std::string(block));
    auto reader = *files::BufferedReader::over(*file, 64);
    reader.seek(6);
    MetadataText text;
    const Result<void> done = read_tags(reader, options, source, text);
    return shown(text, done);
}

std::string from_either(std::string_view block, const ExifReadOptions& options,
                        TextEncoding source = TextEncoding::Utf8) {
    const std::string text = from_block(block, options, source);
    const std::string other = from_file(block, options, source);
    return text == other ? text : text + " in a file: " + other;
}

constexpr ByteOrder orders[] = {ByteOrder::Little, ByteOrder::Big};

TEST(TagReader, WalksTheDirectoriesInOrder) {
    const TiffDirectories directories{
        {ascii(271, "Maker"), {272, Ascii, {}, "Camera\0rest"s}, longs(254, {1}), shorts(999, {1})},
        {rationals(33437, {28, 10}), undefined(37500, "maker note")},
        {bytes(0, "\2\2\0\0"s), ascii(271, "no GPS tag")},
        {ascii(1, "R98"), undefined(2, "0100"), ascii(271, "inner")}};
    for (const ByteOrder order : orders) {
        const std::string block = build_tiff(order, directories);
        const std::string first =
            tagged("EXIF 271=Maker; EXIF 272=Camera; EXIF 34665=103; EXIF 34853=211");
        const std::string inner = tagged("EXIF 33437=2.8; EXIF 40965=163; INTEROP 271=inner");
        const std::string position = tagged("GPS 0=2.2.0.0");
        EXPECT_EQ(from_either(block, everything), first + inner + position);
        EXPECT_EQ(from_either(block, exif), first + inner);
        EXPECT_EQ(from_either(block, gps), position);
        EXPECT_EQ(from_either(block, {}), "");
        const ExifReadOptions with_note{.want_exif = true, .hide_maker_note = false};
        EXPECT_TRUE(from_either(block, with_note).contains(tagged("EXIF 37500=maker note")));
    }
}

struct ValueCase {
    TiffField field;
    std::string expected;
    std::string expected_in_file = expected;
    ExifReadOptions options = everything;
    TextEncoding source = TextEncoding::Utf8;
};

// Each value alone in IFD0 (or in the GPS directory when only that is asked for).
void check_values(const std::vector<ValueCase>& cases) {
    for (const ValueCase& c : cases) {
        for (const ByteOrder order : orders) {
            SCOPED_TRACE(::testing::Message() << c.field.tag << " expecting " << c.expected
                                              << " order " << static_cast<int>(order));
            TiffDirectories directories;
            (c.options.want_exif ? directories.first : directories.gps).push_back(c.field);
            const std::string tag =
                (c.options.want_exif ? "EXIF " : "GPS ") + std::to_string(c.field.tag);
            const std::string block = build_tiff(order, directories);
            EXPECT_EQ(from_block(block, c.options, c.source), section(tag, c.expected));
            EXPECT_EQ(from_file(block, c.options, c.source), section(tag, c.expected_in_file));
        }
    }
}

TEST(TagReader, RendersNumbers) {
    const std::uint32_t minus_one = 0xFFFFFFFF;
    check_values({
        {shorts(258, {65535, 8, 8}), "65535"},
        {shorts(274, {}), ""},
        {longs(256, {0x80000000, 5}), "-2147483648", "2147483648"},
        {longs(256, {minus_one}), "-1", "4294967295"},
        {{256, SignedByte, {0xFE, 1}}, "-2"},
        {{256, SignedShort, {0xFFFE}}, "-2"},
        {rationals(282, {72, 1, 1, 3, 1, 0, 0, 5}), "72|0.333333|nan|0"},
        {rationals(282, {4000000000, 3}), "1.33333e+09"},
        {rationals(282, {1, 0, minus_one, 2}), "1/0|4294967295/2", "1/0|4294967295/2", raw},
        {rationals(282, {}), ""},
        {{256, SignedLong, {minus_one}}, "-1"},
        {{282, SignedRational, {minus_one, 3, 1, 0, 2, minus_one}},
         "-0.333333|nan|-2",
         "-0.333333||-2"},
        {{282, SignedRational, {minus_one, 3, 1, 0}}, "-1/3|1/0", "-1/3|1/0", raw},
        {{256, Float, {16777217}}, "16777216.000000", "16777217.000000"},
        {{256, Float, {minus_one, 7}}, "4294967296.000000", "4294967295.000000"},
        {{256, Double, {16777217, 1}}, "16777217.000000"},
        {{256, None, {1}}, "???unknown???"},
        {{5, Byte, {1}}, "1", "1", gps},
        {{0, Byte, {2, 255, 0}}, "2.255.0", "2.255.0", gps},
        {{0, Byte, {2, 2, 0, 0, 9}}, "0.0.0.0.0", "0.0.0.0.0", gps},
    });
}

TEST(TagReader, RendersText) {
    const auto latin = TextEncoding::Iso8859_1;
    const std::string umlaut = "\xC3\xBC";
    const std::string broken = "<INVALID UTF8; trying native encoding><0:M\xFCller>";
    check_values({
        {ascii(271, "M\xFCller"), broken},
        {{271, Ascii, {}, "abcdefgh"}, "abcdefgh"}, // without its zero byte
        {ascii(271, ""), ""},
        {ascii(271, "M\xFCller"), "<5:M\xFCller>", "<5:M\xFCller>", exif, latin},
        {bytes(271, "b\xFC"), "<5:b\xFC>", "<5:b\xFC>", exif, latin},
        // Exif 3.0's type for texts, whatever the encoding of the others.
        {{271, Utf8, {}, umlaut + "\0x"s}, umlaut, umlaut, exif, latin},
        {{271, Utf8, {}, "M\xFCller"}, broken, broken, exif, latin},
        {undefined(41730, "\2\0\1\0\0"s), "\2\0\1\0\0"s},
        {undefined(37510, umlaut), "<0:" + umlaut + ">", "<0:" + umlaut + ">", raw},
        {undefined(37510, umlaut), "<5:" + umlaut + ">", "<5:" + umlaut + ">", raw, latin},
    });
    // Longer than the pieces in which a file is searched for the zero byte.
    const std::string longer(100'000, 'x');
    check_values({{ascii(271, longer), longer}, {undefined(37510, longer), longer}});
}

TEST(TagReader, DecodesUtf16InTheBlocksByteOrder) {
    for (const ByteOrder order : orders) {
        std::string value;
        for (const char16_t unit : u"T\u00FCr \U0001F600\0ignored"s)
            append_integer<std::uint16_t>(value, unit, order);
        EXPECT_EQ(from_either(tags_of({bytes(40091, value)}, order), exif),
                  tagged("EXIF 40091=Tür \U0001F600"));
    }
}

TEST(TagReader, GivesPositionsInDecimalDegrees) {
    // The reference of a tag may stand behind it.
    const TiffFields fields{ascii(1, "S"),        rationals(2, {53, 1, 22, 1, 5825, 100}),
                            ascii(3, "W"),        rationals(4, {180, 1}),
                            rationals(6, {4, 1}), rationals(20, {53, 1, 22, 0, 1, 1}),
                            ascii(19, "N"),       rationals(22, {7, 2, 30, 1}),
                            ascii(21, "w")};
    for (const ByteOrder order : orders) {
        const std::string block = build_tiff(order, {.gps = fields});
        EXPECT_EQ(from_either(block, decimal),
                  tagged("GPS 1=S; GPS 2=-53.38284722; GPS 3=W; GPS 4=-180.00000000; GPS 6=4; "
                         "GPS 20=53|nan|1; GPS 19=N; GPS 22=-4.00000000; GPS 21=w"));
        EXPECT_TRUE(from_either(block, gps).contains(tagged("GPS 2=53|22|58.25")));
    }

    constexpr std::uint32_t most = 0xFFFFFFFF;
    const struct {
        std::vector<UnsignedRational> position;
        char reference;
        std::optional<std::string> expected;
    } cases[] = {
        {{{0, 1}, {0, 1}, {18, 1'000'000}}, 'S', "-0.00000001"},
        {{{0, 1}, {0, 1}, {17, 1'000'000}}, 'S', "0.00000000"},
        {{{89, 1}, {59, 1}, {3599999999, 60000000}}, 'N', "90.00000000"},
        {{{most, 1}, {most, 1}, {most, 1}}, 0, "4367743129.72083333"},
        {{{1, most}}, 'E', "0.00000000"},
        {{{1, 1}, {1, 0}}, 'E', {}},
        {{}, 'E', {}},
        {{{1, 1}, {1, 1}, {1, 1}, {1, 1}}, 'E', {}},
    };
    for (const auto& [position, reference, expected] : cases)
        EXPECT_EQ(decimal_degrees(position, reference), expected) << expected.value_or("none");
}

TEST(TagReader, RefusesWhatIsNoBlock) {
    const std::string sound = tags_of({ascii(271, "M")});
    const auto with = [&](std::size_t at, std::string_view bytes) {
        return std::string(sound).replace(at, bytes.size(), bytes);
    };
    EXPECT_EQ(from_either(with(2, "zz"), exif), tagged("EXIF 271=M")); // in the place of 42
    EXPECT_EQ(from_either(with(0, "XX"), exif), "!-302");
    EXPECT_EQ(from_either(sound.substr(0, 7), exif), "!-302");
    EXPECT_EQ(from_either(with(4, "\4"), exif), "!-4249");
    EXPECT_EQ(from_block(with(7, "\xFF"), exif), "!-4249");
    EXPECT_EQ(from_file(with(7, "\xFF"), exif), "!-39");
    // One entry is announced too much; the offset of a next directory may be missing.
    EXPECT_EQ(from_either(sound.substr(0, sound.size() - 4), exif), tagged("EXIF 271=M"));
    const std::string short_of_one = with(8, "\2").substr(0, sound.size() - 4);
    EXPECT_EQ(from_block(short_of_one, exif), tagged("EXIF 271=M") + "!-4249");
    EXPECT_EQ(from_file(short_of_one, exif), tagged("EXIF 271=M") + "!-39");
}

TEST(TagReader, SaysWhatIsCorrupt) {
    const std::string corrupt = "<CORRUPT EXIF TAG>";
    const auto both = [](const TiffField& field, const ExifReadOptions& options) {
        const std::string block =
            build_tiff(ByteOrder::Big, {.first = {field, ascii(272, "next")},
                                        .gps = {bytes(5, std::string(1, '\0'))}});
        return std::pair(from_block(block, options), from_file(block, options));
    };
    const auto value = [](const std::string& text) {
        return section("EXIF 282", text);
    };
    // An unknown type, wherever its value is said to be.
    EXPECT_EQ(both({282, FieldType{13}, {1}}, everything).first, value(corrupt) + "!-4249");
    EXPECT_EQ(both({282, FieldType{65535}, {1}}, everything).second, value(corrupt) + "!-4249");
    EXPECT_EQ(both({282, FieldType{13}, {1}}, gps).second, tagged("GPS 5=0"));
    EXPECT_TRUE(both({999, FieldType{13}, {1}}, exif).first.starts_with(tagged("EXIF 272=next")));

    // Values beyond the end: the block's are cut, those of a file are missing.
    const std::uint32_t huge = 0xFFFFFFFF;
    for (const TiffField& field : {TiffField{282, Ascii, {}, "", 9, 0x7FFFFFFF},
                                   TiffField{282, Undefined, {}, "", huge, 0x7FFFFFFF}})
        EXPECT_EQ(both(field, exif), std::pair(value(corrupt) + "!-4249", value("") + "!-39"));
    const auto [cut, missing] = both({282, Rational, {}, "", 3, 0x7FFFFFFF}, exif);
    EXPECT_EQ(cut, value(corrupt) + "!-4249");
    EXPECT_TRUE(
        missing.starts_with(value("<readErr>|<readErr>|<readErr>") + tagged("EXIF 272=next")));
    const auto at_end = [&](TiffField field, const char* in_block, const std::string& in_file) {
        const std::string block = tags_of({std::move(field)});
        EXPECT_EQ(from_block(block, exif), value(in_block));
        EXPECT_EQ(from_file(block, exif), in_file);
    };
    at_end({282, Ascii, {}, "abcdefgh", huge}, "abcdefgh", value("abcdefgh") + "!-39");
    at_end({282, Ascii, {}, "abcdefgh\0x"s, huge}, "abcdefgh", value("abcdefgh"));
    at_end({282, Rational, {1, 2, 3, 4, 5}, "", 3}, "0.5|0.75", value("0.5|0.75|<readErr>"));
    at_end({282, Undefined, {}, "abcdefgh", 10}, "abcdefgh", value("abcdefgh") + "!-39");
}

TEST(TagReader, ALoopOrABrokenInnerDirectoryEndsAlone) {
    const auto order = ByteOrder::Little;
    const auto pointer = [](std::uint16_t tag, std::uint32_t offset) {
        return TiffField{tag, Ascii, {}, "", 9, offset}; // its type is not asked for
    };
    // All inner directories are IFD0 itself.
    const std::string loop =
        tags_of({shorts(274, {1}), longs(40965, {8}), pointer(34665, 8), pointer(34853, 8)}, order);
    const std::string text = from_block(loop, everything);
    EXPECT_EQ(text.find("##INTEROP 274|1|"), text.rfind("##INTEROP 274|1|"));
    EXPECT_EQ(text.find("##GPS"), std::string::npos);

    const TiffFields broken{{282, FieldType{99}, {1}}, ascii(271, "lost")};
    const std::string block =
        build_tiff(order, {{ascii(271, "M")}, broken, {{0, FieldType{13}, {1}}}, {}});
    EXPECT_EQ(from_either(block, everything),
              tagged("EXIF 271=M; EXIF 34665=50; EXIF 34853=85; EXIF 282=<CORRUPT EXIF TAG>; "
                     "GPS 0=<CORRUPT EXIF TAG>"));

    // A pointer that leads nowhere costs what it leads to, and nothing else.
    const auto nowhere = [](std::uint16_t tag) {
        return longs(tag, {4000});
    };
    const TiffFields level{bytes(5, std::string(1, '\0'))};
    const std::pair<TiffDirectories, const char*> cases[] = {
        {{.first = {ascii(271, "M"), nowhere(34665)}, .gps = level},
         "EXIF 271=M; EXIF 34665=4000; EXIF 34853=50; GPS 5=0"},
        {{.first = {ascii(271, "M"), nowhere(34853)}, .exif = {shorts(41986, {1})}},
         "EXIF 271=M; EXIF 34853=4000; EXIF 34665=50; EXIF 41986=1"},
        {{.first = {ascii(271, "M")}, .exif = {nowhere(40965)}, .gps = level},
         "EXIF 271=M; EXIF 34665=50; EXIF 34853=68; EXIF 40965=4000; GPS 5=0"},
    };
    for (const auto& [directories, sections] : cases)
        EXPECT_EQ(from_either(build_tiff(order, directories), everything), tagged(sections));
    // So does a value that an inner directory of a file lacks.
    const std::string lacking =
        build_tiff(order, {{ascii(271, "M")}, {{37510, Undefined, {}, "", 9, 4000}}});
    EXPECT_EQ(from_file(lacking, exif), tagged("EXIF 271=M; EXIF 34665=38; EXIF 37510="));
}

// Entries that all point at one long value: the text is bounded by the block's size, not by theirs.
TEST(TagReader, BoundsWhatOverlappingValuesGive) {
    for (const TiffField& field : {TiffField{282, Undefined, {}, "", 60'000, 500'000},
                                   TiffField{282, Rational, {}, "", 7'500, 500'000},
                                   TiffField{282, Rational, {}, "", 0xFFFFFFFF, 0xFFFFFF00},
                                   TiffField{282, Undefined, {}, "", 0xFFFFFFFF, 500'000},
                                   TiffField{282, Ascii, {}, "", 0xFFFFFFFF, 500'000}}) {
        std::string block = build_tiff(ByteOrder::Little, {TiffFields(10'000, field)});
        block.resize(1'000'000, '1');
        const std::string in_block = from_block(block, exif);
        const std::string in_file = from_file(block, exif);
        for (const std::string& text : {in_block, in_file}) {
            EXPECT_LT(text.size(), 4 * block.size());
            EXPECT_TRUE(text.ends_with("<CORRUPT EXIF TAG>|##END 282!-4249") ||
                        text.ends_with("!-39"))
                << *field.count;
        }
    }
    // An ordinary file with values as long as itself, and many that are short.
    TiffFields fields(10'000, ascii(271, "value"));
    fields.push_back(undefined(37510, std::string(300'000, 'x')));
    EXPECT_TRUE(from_either(build_tiff(ByteOrder::Big, {fields}), exif).ends_with("x|##END 37510"));
}

TEST(TagReader, ReadsNoMoreOfAFileThanTheTags) {
    const std::string start = tags_of({ascii(271, "Maker"),
                                       ascii(272, std::string(9000, 'x')),
                                       {273, Long, {}, "", 0x20000000, 100},
                                       {306, Ascii, {}, "", 0x7FFFFFFF, 200}},
                                      ByteOrder::Big);
    FakeSystem files;
    files.add(u"large.tif", FakeItem{.length = 2'000'000'000, .byte_at = [&](std::uint64_t at) {
                                         return at < start.size() ? start[at] : '\0';
                                     }});
    const auto file = *files.open(native(u"large.tif"), files::Permission::Read);
    EXPECT_GT(metadata_of("GetExif", *file).size(), 9000u);
    EXPECT_LT(files.end_of_reading(), 16'384u + 4096);
    EXPECT_LE(files.longest_request(), 16'384u);
}

TEST(FindTag, GivesTheRawBytesOfTheFirst) {
    const auto found = [](const std::string& block, std::uint16_t tag) {
        const auto file = files::memory_file("front" + block);
        auto reader = *files::BufferedReader::over(*file, 32);
        reader.seek(5);
        const Result<std::string> bytes = find_tag(reader, tag);
        return bytes ? *bytes : std::to_string(number(bytes.error()));
    };
    for (const ByteOrder order : orders) {
        const std::string block = tags_of({undefined(33723, "abc"),
                                           bytes(700, "<x:xmpmeta/>"),
                                           bytes(700, "second packet"),
                                           {271, FieldType{13}, {1}},
                                           {272, Ascii, {}, "", 5, 3},
                                           {273, Ascii, {}, "", 5, 0x7FFFFFFF},
                                           {274, None, {1}}},
                                          order);
        // The value of 272 lies before its entry.
        const std::pair<std::uint16_t, const char*> cases[] = {
            {700, "<x:xmpmeta/>"}, {33723, "abc"}, {274, ""},   {275, "-2026"},
            {271, "-4249"},        {272, "-4249"}, {273, "-39"}};
        for (const auto& [tag, expected] : cases)
            EXPECT_EQ(found(block, tag), expected) << tag;
        EXPECT_EQ(found(block.substr(0, 40), 275), "-39");
        EXPECT_EQ(found(block.substr(0, 7), 700), "-302");
        EXPECT_EQ(found(std::string(block).replace(4, 4, 4, '\0'), 700), "-4249");
    }
    // The first byte behind the entry may begin the value.
    const std::string tight = tags_of({{700, Byte, {}, "", 6, 22}});
    EXPECT_EQ(found(tight + "abc", 700), "\0\0\0\0ab"s);
    EXPECT_EQ(found(std::string(tight).replace(18, 1, "\x15"), 700), "-4249");

    EXPECT_TRUE(formats::begins_like_tiff("MMxx1234"));
    EXPECT_FALSE(formats::begins_like_tiff("MMxx123"));
    EXPECT_FALSE(formats::begins_like_tiff("\x89PNG\r\n\x1A\n"));
}

} // namespace
} // namespace vell::metadata
