#include "src/metadata/writing/exif_writer.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/writing/exif_value.h"
#include "src/metadata/writing/rational_text.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/integers.h"
#include "tests/portable/table_text.h"
#include "tests/portable/tagged_value.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <random>

namespace vell::metadata {
namespace {

using test::ascii;
using test::big32;
using test::build_tiff;
using test::bytes;
using test::FakeCall;
using test::has;
using test::little32;
using test::section;
using test::undefined;

constexpr std::size_t room = 65'527;

// The tags of a block as the host would show them.
std::string read(std::string_view block, TextEncoding encoding = TextEncoding::Native,
                 bool raw = false, bool decimal = false) {
    MetadataText text;
    static_cast<void>(read_tags(
        block, {.want_exif = true, .want_gps = true, .decimal_gps = decimal, .raw_values = raw},
        encoding, text));
    std::u16string shown;
    for (const MetadataText::Piece& piece : text.pieces())
        shown += test::decoded(piece.bytes, piece.encoding);
    return utf8_from_utf16(shown);
}

Result<std::string> write(std::string_view existing, std::string_view text,
                          std::optional<TextEncoding> encoding = {},
                          MakerNote maker_note = MakerNote::Remove, std::size_t most = room) {
    FakeCall call({});
    const auto sections = VELL_TRY(parse_tagged_text(text));
    return write_exif(existing, sections, maker_note, TextStore(call, encoding), most);
}

// A block with every kind of value, a maker note and a thumbnail directory.
std::string full_block(ByteOrder order) {
    return build_tiff(
        order, {.first = {ascii(271, "Vell"),
                          ascii(272, "M\xFCller"),
                          {274, FieldType::Short, {6}},
                          {282, FieldType::Rational, {72, 1}},
                          ascii(306, "2020:12:31 23:59:59"),
                          bytes(40091, order == ByteOrder::Big ? std::string("\0T\0i\0\0", 6)
                                                               : std::string("T\0i\0\0\0", 6))},
                .exif = {{33434, FieldType::Rational, {1, 60}},
                         undefined(36864, "0221"),
                         {37379, FieldType::SignedRational, {0xFFFFFFFF, 3}},
                         {37380, FieldType::SignedRational, {1, 0}},
                         {37396, FieldType::Short, {10, 20, 30}},
                         undefined(37500, std::string(500, 'm')),
                         undefined(37510, std::string("ASCII\0\0\0a comment", 17)),
                         {40962, FieldType::Long, {0x90000000}},
                         undefined(41730, "\xFF\xFE\x80zz"),
                         {42034, FieldType::Rational, {24, 1, 70, 1, 28, 10, 0, 0}}},
                .gps = {bytes(0, std::string("\2\2\0\0", 4)),
                        ascii(1, "S"),
                        {2, FieldType::Rational, {33, 1, 51, 1, 24444, 1000}},
                        bytes(5, "\1")},
                .interoperability = {ascii(1, "R98"), undefined(2, "0100")}});
}

TEST(ExifWriter, WhatWasReadLeavesEveryByteAsItIs) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string block = full_block(order);
        for (const TextEncoding encoding : {TextEncoding::Native, TextEncoding::Utf8})
            for (const bool raw : {false, true})
                for (const bool decimal : {false, true})
                    EXPECT_EQ(*write(block, read(block, encoding, raw, decimal && !raw), encoding,
                                     MakerNote::Keep),
                              block)
                        << raw << decimal;
        const std::string removed = *write(block, read(block));
        EXPECT_EQ(read(removed), read(block));
        EXPECT_FALSE(has(removed, "mmm"));
        EXPECT_TRUE(has(block, "mmm"));
    }
}

TEST(ExifWriter, ValuesTakeTheTypesOfTheirTags) {
    const auto rows = test::table("exif_values.txt", 4);
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        for (const std::string& existing : {std::string(), full_block(order)}) {
            for (const auto& row : rows) {
                const int tag = std::stoi(row[1]);
                const auto block = write(existing, section(row[0], tag, row[2]));
                const std::string shown =
                    block ? read(*block, TextEncoding::Native, true) : "refused";
                const std::string raw = block ? section(row[0], tag, row[3]) : row[3];
                EXPECT_TRUE(has(shown, raw)) << tag << ' ' << row[2] << '\n' << shown;
            }
        }
    }
}

TEST(ExifWriter, DecimalDegreesBecomeAPositionWithItsReference) {
    const std::tuple<std::string, const char*, const char*> cases[] = {
        {section("GPS", 2, "-33.85678900"), "-33.85678900", "S"},
        {section("GPS", 2, "59.99999999"), "59.99999999", "N"},
        {section("GPS", 2, "-33,5"), "-33.50000000", "S"},
        {section("GPS", 1, "S") + section("GPS", 2, "12.5"), "-12.50000000", "S"},
        {section("GPS", 2, "-12.5") + section("GPS", 1, "S"), "-12.50000000", "S"},
    };
    for (const std::string& existing :
         {std::string(), full_block(ByteOrder::Big)}) // a southern one
        for (const auto& [text, decimal, reference] : cases) {
            const std::string shown =
                read(*write(existing, text), TextEncoding::Native, false, true);
            EXPECT_TRUE(has(shown, section("GPS", 2, decimal))) << shown;
            EXPECT_TRUE(has(shown, section("GPS", 1, reference))) << shown;
        }
}

TEST(ExifWriter, TextsTakeTheEncodingThatIsAskedFor) {
    const std::string text = section("EXIF", 270, "\xC3\xA9");
    const std::string foreign = section("EXIF", 270, "\xE6\x97\xA5");
    EXPECT_TRUE(has(*write("", text, TextEncoding::Native), std::string("\xE9\0", 2)));
    EXPECT_EQ(*write("", text, TextEncoding::Utf8), *write("", text));
    EXPECT_EQ(write("", foreign, TextEncoding::AsciiMac).error(), ErrorCode::ParameterUnreadable);
    // What was read behind the remark goes back as it was.
    const std::string native = build_tiff(ByteOrder::Little, {.first = {ascii(270, "caf\xE9")}});
    const std::string shown = read(native, TextEncoding::Utf8);
    EXPECT_EQ(*write(native, shown, TextEncoding::Utf8), native);
    EXPECT_TRUE(has(*write("", shown, TextEncoding::Utf8), std::string("caf\xE9\0", 5)));
}

// One reading, as UTF-8, has all texts of a write; bytes that are no text stay bytes.
TEST(ExifWriter, WithoutANamedEncodingAllNewTextsAreUtf8) {
    const std::string texts = section("EXIF", 270, "\xC3\xA9") + section("EXIF", 271, "Vell") +
                              section("EXIF", 315, "\xE6\x97\xA5");
    const std::string binary = section("EXIF", 41730, "\xC3\xBF\1");
    const std::string block = *write("", texts + binary);
    EXPECT_TRUE(has(read(block, TextEncoding::Utf8), texts));
    EXPECT_TRUE(has(block, "\xFF\1"));
    // Whoever reads it in either way may give it back, and what stays has its old bytes.
    for (const TextEncoding reading : {TextEncoding::Native, TextEncoding::Utf8})
        EXPECT_EQ(*write(block, read(block, reading)), block);
    const std::string old = build_tiff(
        ByteOrder::Big, {.first = {ascii(270, "here"), ascii(272, "M\xFCller, or longer")}});
    const std::string mixed = *write(old, section("EXIF", 270, "\xC3\xA9") +
                                              section("EXIF", 272, "M\xC3\xBCller, or longer"));
    EXPECT_TRUE(has(mixed, "M\xFCller, or longer"));
    EXPECT_TRUE(has(mixed, "\xC3\xA9"));
    for (const TextEncoding reading : {TextEncoding::Native, TextEncoding::Utf8})
        EXPECT_EQ(*write(mixed, read(mixed, reading)), mixed);
}

TEST(ExifWriter, TitlesAreLittleEndianInEveryBlock) {
    const std::string stored("\xE5\x65 \0\x3D\xD8\0\xDE\0\0", 10);
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string existing = full_block(order);
        const std::string written = *write(
            existing, section("EXIF", 40091, "\xE6\x97\xA5 \xF0\x9F\x98\x80"), {}, MakerNote::Keep);
        EXPECT_TRUE(has(written, stored));
        // A big-endian block reads with its bytes swapped, lone surrogates and all; given back,
        // they stay.
        EXPECT_EQ(*write(written, read(written), {}, MakerNote::Keep), written);
    }
}

TEST(ExifWriter, KnowsTheTextsOfExif3) {
    const std::string art = "\xE6\x97\xA5\xE6\x9C\xAC";
    const auto has_type = [](const std::string& block, std::uint16_t tag, FieldType type) {
        return has(block, little32(static_cast<std::uint32_t>(type) << 16U | tag));
    };
    const std::string block = build_tiff(
        ByteOrder::Little,
        {.first = {ascii(271, "Vell"), {315, FieldType::Utf8, {}, art + std::string(1, '\0')}}});
    for (const TextEncoding encoding : {TextEncoding::Native, TextEncoding::Utf8}) {
        const std::string more = *write(block, section("EXIF", 270, "a new one"), encoding);
        EXPECT_TRUE(has(read(more, encoding), section("EXIF", 315, art)));
        EXPECT_EQ(*write(more, read(more, encoding), encoding), more);
        // It keeps its type and encoding; where there was none, other programs know ASCII.
        const std::string umlaut = section("EXIF", 315, "\xC3\xBCppig");
        const std::string changed = *write(block, umlaut, encoding);
        EXPECT_TRUE(has_type(changed, 315, FieldType::Utf8));
        EXPECT_TRUE(has(read(changed, TextEncoding::Native), umlaut));
        EXPECT_TRUE(has_type(*write("", umlaut, encoding), 315, FieldType::Ascii));
    }
}

// Where the value of such a type stands, and how long it is, only others know.
TEST(ExifWriter, ValuesOfUnknownTypesStayWhereTheyAre) {
    for (const auto type : {FieldType{13}, FieldType{16}, FieldType{130}}) {
        const std::string value = "sixteen bytes ..";
        const std::string in_first = build_tiff(
            ByteOrder::Little, {.first = {ascii(271, "Vell"), {50000, type, {}, value}}});
        // In the directory behind IFD0, which is the builder's for the Exif directory.
        std::string in_next = build_tiff(
            ByteOrder::Little, {.first = {ascii(271, "Vell")}, .exif = {{50000, type, {}, value}}});
        in_next.replace(8 + 2 + 24, 4, in_next.substr(8 + 2 + 12 + 8, 4)); // as IFD0's next one
        in_next.replace(8 + 2 + 12, 2, "\x69\x77");                        // and no Exif pointer
        for (const std::string& block : {in_first, in_next}) {
            const std::string written =
                *write(block, section("EXIF", 270, "longer than the value"));
            EXPECT_EQ(written.find(value), block.find(value)) << static_cast<int>(type);
        }
    }
}

TEST(ExifWriter, KeepsWhatTheTextDoesNotName) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        std::string block = full_block(order);
        // A thumbnail behind the block: the directory of another block, which follows IFD0.
        const auto directory_at = static_cast<std::uint32_t>(block.size());
        const std::uint32_t image_at = directory_at + 2 + 24 + 4;
        const std::string thumbnail = build_tiff(
            order, {.first = {{513, FieldType::Long, {image_at}}, {514, FieldType::Long, {9}}}});
        block.replace(10 + std::size_t{*load<std::uint16_t>(block, 8, order)} * 12, 4,
                      order == ByteOrder::Big ? big32(directory_at) : little32(directory_at));
        block += thumbnail.substr(8) + "THUMBNAIL";

        const std::size_t note = block.find("mmm");
        const std::string longer(300, 'x');
        const std::string written = *write(
            block, section("EXIF", 271, longer) + section("EXIF", 315, "Me"), {}, MakerNote::Keep);
        // Offsets inside the maker note and of the thumbnail stay true.
        EXPECT_EQ(written.find("mmm"), note);
        EXPECT_EQ(written.substr(image_at, 9), "THUMBNAIL");
        std::string expected = read(block);
        const std::string old = section("EXIF", 271, "Vell");
        expected.replace(expected.find(old), old.size(), section("EXIF", 271, longer));
        const std::string time = section("EXIF", 306, "2020:12:31 23:59:59");
        expected.insert(expected.find(time) + time.size(), section("EXIF", 315, "Me"));
        // Directories may have moved.
        const auto without_pointers = [](std::string text) {
            for (const char* opener : {"\r##EXIF 34665", "\r##EXIF 34853", "\r##EXIF 40965"})
                if (const std::size_t at = text.find(opener); at != std::string::npos)
                    text.erase(at, text.find("\r##END", at) + 12 - at);
            return text;
        };
        EXPECT_EQ(without_pointers(read(written)), without_pointers(expected));
        // Removed again, the room is used again, and a directory without entries goes.
        EXPECT_FALSE(has(read(*write(written, section("EXIF", 315, ""))), "##EXIF 315"));
        const std::string no_gps =
            *write(written, section("GPS", 0, "") + section("GPS", 1, "") + section("GPS", 2, "") +
                                section("GPS", 5, ""));
        EXPECT_FALSE(has(read(no_gps), "34853"));
        EXPECT_LE(no_gps.size(), written.size());
    }
}

TEST(ExifWriter, RefusesWhatDoesNotFitAndBlocksThatCannotBeRead) {
    const std::string text = section("EXIF", 270, std::string(1000, 'x'));
    const std::size_t needed = write("", text)->size();
    EXPECT_TRUE(write("", text, {}, MakerNote::Remove, needed));
    EXPECT_EQ(write("", text, {}, MakerNote::Remove, needed - 1).error(),
              ErrorCode::ResourceTooLarge);
    EXPECT_EQ(write("XX*\0\0\0\0\0", text).error(), ErrorCode::ShortRead);
    EXPECT_EQ(write(std::string("II*\0\4\0\0\0", 8), text).error(), ErrorCode::CorruptStructure);
    EXPECT_EQ(write(std::string("II*\0\0\1\0\0", 8), text).error(), ErrorCode::CorruptStructure);
    EXPECT_EQ(*write("", ""), "");
    EXPECT_EQ(*write("", section("EXIF", 270, "")), "");
}

TEST(Fractions, ReadAsTheTextsThatTheyComeFrom) {
    std::mt19937_64 random(42);
    for (int round = 0; round < 200'000; ++round) {
        const double value = static_cast<double>(random() % 0xFFFFFFFF) /
                             static_cast<double>(random() % (round % 2 ? 10'000 : 0xFFFFFFFF) + 1);
        const std::string text = to_text(value, 6);
        const auto fraction = parse_fraction(text, 0xFFFFFFFF);
        ASSERT_TRUE(fraction) << text;
        ASSERT_LE(fraction->numerator, 0xFFFFFFFF);
        ASSERT_LE(fraction->denominator, 0xFFFFFFFFU);
        if (value > 1e-3) { // below, 32 bits have fewer than six digits
            ASSERT_EQ(to_text(static_cast<double>(fraction->numerator) /
                                  static_cast<double>(fraction->denominator),
                              6),
                      text);
        }
    }
    for (const char* text : {"", "x", "1e99", "inf", "1/2/3", "/", "1.5/2", "0x10", "1 2"})
        EXPECT_FALSE(parse_fraction(text, 0xFFFFFFFF)) << text;
    // The sign is the numerator's, which has room for it or not.
    const auto negative = parse_fraction("1/-2", 0x7FFFFFFF);
    ASSERT_TRUE(negative);
    EXPECT_EQ(negative->numerator, -1);
    EXPECT_EQ(negative->denominator, 2U);
    EXPECT_FALSE(parse_fraction("-2147483648/-1", 0x7FFFFFFF));
}

} // namespace
} // namespace vell::metadata
