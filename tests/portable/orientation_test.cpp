// How pictures are to be turned, as files of every kind say it.
#include "picture_files.h"
#include "real_files.h"
#include "src/pictures/inside/orientation.h"

#include <gtest/gtest.h>

namespace vell::pictures {
namespace {

using namespace vell::test;
using namespace std::string_literals;

std::string tags(std::uint32_t orientation, ByteOrder order = ByteOrder::Big) {
    return build_tiff(order, {.first = {{256, FieldType::Short, {40}},
                                        {274, FieldType::Short, {orientation}},
                                        {305, FieldType::Ascii, {}, "maker\0"s}}});
}
std::string webp(const std::string& exif) {
    return riff_chunk("RIFF", "WEBP" + riff_chunk("VP8X", std::string(10, '\0')) +
                                  riff_chunk("VP8 ", std::string(301, 'p')) +
                                  riff_chunk("EXIF", exif));
}
int orientation(const std::string& bytes) {
    BytesInMemory source(bytes);
    const auto found = orientation_of(source);
    return found ? static_cast<int>(*found) : static_cast<int>(found.error());
}

void expect_some(int found) {
    EXPECT_GE(found, 1);
    EXPECT_LE(found, 8);
}

// Files of each kind with that block of tags.
std::vector<std::pair<const char*, std::string>> files_with(const std::string& block) {
    const std::string picture(9000, 'p');
    std::string raw = block;
    (raw[0] == 'I' ? raw[2] : raw[3]) = 0x55;
    return {
        {"JPEG",
         jpeg({segment(SegmentMarker::App0, "JFIF\0"s), segment(SegmentMarker::App1, "http"),
               exif_segment(block), segment(SegmentMarker::App2, picture)})},
        {"PNG", png({png_chunk("IDAT", picture), png_chunk("eXIf", block)})},
        {"TIFF", block + picture},
        {"raw photograph with another number", raw},
        {"WebP", webp(block)},
        {"WebP, with an identifier", webp("Exif\0\0"s + block)},
        {"CR3", file_type + box("moov", canon_box(box("CNCV", "x") + box("CMT1", block)))},
        {"MRW", mrw(block)},
        {"RAF", fujifilm_raf(jpeg({exif_segment(block)}))},
    };
}

} // namespace

TEST(Orientation, IsWhatTheTagsSay) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big})
        for (const std::uint32_t number : {1U, 2U, 5U, 6U, 8U, 0U, 9U, 0x106U})
            for (const auto& [kind, file] : files_with(tags(number, order)))
                EXPECT_EQ(orientation(file), number == 0 || number > 8 ? 1 : int(number)) << kind;
}

TEST(Orientation, OfOldRawPhotographsIsTheirRotation) {
    const auto canon = [](std::int32_t degrees) {
        const std::string information = little32(3000) + little32(2000) + little32(0) +
                                        little32(static_cast<std::uint32_t>(degrees)) + little32(0);
        const auto heap = [](const std::string& type, const std::string& data) {
            return data + "\1\0"s + type + little32(length_of(data)) + little32(0) +
                   little32(length_of(data));
        };
        return "II\x1A\0\0\0HEAPCCDR"s + std::string(12, '\0') +
               heap("\x0A\x30"s, heap("\x10\x18"s, information));
    };
    const auto sigma = [](std::uint32_t degrees) {
        return "FOVb"s + std::string(32, '\0') + little32(degrees);
    };
    const std::pair<int, int> rotations[] = {{0, 1}, {90, 6}, {180, 3}, {270, 8}, {-90, 8}, {7, 1}};
    for (const auto& [degrees, expected] : rotations) {
        EXPECT_EQ(orientation(canon(degrees)), expected) << degrees;
        EXPECT_EQ(orientation(sigma(static_cast<std::uint32_t>(degrees < 0 ? 270 : degrees))),
                  expected)
            << degrees;
    }
}

TEST(Orientation, IsTopLeftWhereNothingIsSaid) {
    for (const std::string& file :
         {""s, "M"s, "a text"s, jpeg({}), png({}), "GIF89a"s, webp(""), movie_with(""),
          jpeg({exif_segment("MM\0\x2A\xFF\xFF\xFF\xFF"s)})})
        EXPECT_EQ(orientation(file), 1);
    // Bytes, or a value without any number, say nothing; a long number does.
    const auto with = [](TiffField field) {
        return orientation(build_tiff(ByteOrder::Little, {.first = {std::move(field)}}));
    };
    EXPECT_EQ(with({274, FieldType::Ascii, {}, "6\0"s}), 1);
    EXPECT_EQ(with({274, FieldType::Short, {6}, {}, 0}), 1);
    EXPECT_EQ(with({274, FieldType::Long, {6}}), 6);
}

// Wherever a file ends, and whichever of its bytes are others, there is an orientation.
TEST(Orientation, IsFoundDespiteDamage) {
    for (const auto& [kind, whole] : files_with(tags(6))) {
        for (std::size_t end = 0; end < whole.size(); end += end < 400 ? 1 : 499)
            expect_some(orientation(whole.substr(0, end)));
        for (std::size_t at = 0; at < std::min<std::size_t>(whole.size(), 400); ++at) {
            std::string changed = whole;
            changed[at] = static_cast<char>(~changed[at]);
            expect_some(orientation(changed));
        }
    }
}

// None of the picture: a few hundred bytes, and a failing device is told.
TEST(Orientation, ReadsOnlyTheTags) {
    for (const auto& [kind, whole] : files_with(tags(6))) {
        SCOPED_TRACE(kind);
        CountedBytes counted(whole);
        ASSERT_TRUE(orientation_of(counted));
        EXPECT_LT(counted.bytes_read, 260U);
        expect_that_failing_reads_are_told(
            whole, [](ByteSource& source) { return orientation_of(source); });
    }
}

// The photographs' names tell.
TEST(Orientation, IsThatOfRealPhotographs) {
    std::size_t seen = 0;
    for (const auto& path : real_files({"picture"})) {
        const std::string name = path.stem().string();
        if (!name.starts_with("orient-"))
            continue;
        ++seen;
        EXPECT_EQ(orientation(bytes_of(path)), std::max(1, name.back() - '0')) << name;
    }
    if (seen == 0)
        GTEST_SKIP() << no_real_files;
}

} // namespace vell::pictures
