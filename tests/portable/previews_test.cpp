// Pictures found in files of every kind, and the choice among them.
#include "picture_files.h"
#include "real_files.h"
#include "src/pictures/inside/previews.h"

#include <gtest/gtest.h>

#include <map>

namespace vell::pictures {
namespace {

using namespace vell::test;
using namespace std::string_literals;

std::string sides(const EmbeddedPicture& picture) {
    return to_text(std::uint64_t{picture.width}) + "x" + to_text(std::uint64_t{picture.height});
}

Result<std::vector<EmbeddedPicture>> pictures_in(const std::string& file) {
    BytesInMemory source(file);
    return find_pictures(source);
}

// "cover 300x200 turned 6 copied", one for each; and each is the whole of a picture.
std::string found_in(const std::string& file) {
    const auto pictures = pictures_in(file);
    if (!pictures)
        return to_text(std::int64_t{static_cast<std::int32_t>(pictures.error())});
    std::string all;
    for (const EmbeddedPicture& each : *pictures) {
        const bool is_copy = !each.bytes.empty();
        all += (all.empty() ? "" : ", ") +
               (each.kind == EmbeddedPicture::Kind::Cover ? "cover "s : ""s) + sides(each) +
               (each.orientation == Orientation::TopLeft
                    ? ""
                    : " turned " + to_text(static_cast<std::uint64_t>(each.orientation))) +
               (is_copy ? " copied" : "");
        const std::string bytes = is_copy ? each.bytes : file.substr(each.offset, each.size);
        EXPECT_EQ(bytes.size(), each.size);
        EXPECT_TRUE(bytes.starts_with("\xFF\xD8") ? bytes.ends_with("\xFF\xD9")
                                                  : bytes.ends_with("IENDsum."))
            << all;
    }
    return all;
}

struct Sample {
    const char* name;
    std::string file;
    std::string pictures;
};

std::vector<Sample> raw_photographs() {
    return {
        {"CR2", canon_cr2(), "1620x1080 turned 6, 160x120 turned 6"},
        {"NEF", nikon_nef(), "3008x2000 turned 8, 570x375 turned 8"},
        {"DNG", dng(), "1024x683, 256x171"},
        {"RW2", panasonic_rw2(), "1920x1440 turned 3"},
        {"ORF", olympus_orf(), "1600x1200"},
        {"MRW", minolta_mrw(), "640x480 turned 6"},
        {"RAF", fujifilm_raf(turned_jpeg(1920, 1280, 6)), "1920x1280 turned 6"},
        {"CRW", canon_crw(), "2048x1536 turned 8, 160x120 turned 8"},
        {"X3F", sigma_x3f(), "2000x1300 turned 3"},
        {"CR3", canon_cr3(), "160x120 turned 8, 1620x1080 turned 8, 6000x4000 turned 8"},
        {"HEIF", heif(), "320x240 turned 6, 160x120 copied, 80x60"},
        {"PSD", photoshop_file(), "160x107"},
    };
}

std::vector<Sample> music() {
    const std::string cover = small_jpeg(500, 480);
    const std::string icon = small_png(32, 32);
    const std::string large = small_jpeg(500, 480, SegmentMarker::Sof2, 8,
                                         segment(SegmentMarker::App2, std::string(1100, 'p')));
    const std::string comment = "metadata_block_picture=" + base64(flac_picture(large));
    const std::string tag = id3_tag(3, id3_frame("APIC", attached(cover)));
    const auto aiff_chunk = [](const std::string& type, const std::string& data) {
        return type + big_size(data.size()) + even(data);
    };
    return {
        {"MP3 2.2",
         id3_tag(2, "TT2"s + "\0\0\4"s + "\0abc"s + "PIC\0"s +
                        big16(static_cast<std::uint16_t>(6 + cover.size())) + "\0JPG\3\0"s + cover),
         "cover 500x480"},
        {"MP3 2.3, others before the front cover",
         id3_tag(3, id3_frame("APIC", attached(icon, 1)) +
                        id3_frame("APIC", attached(small_jpeg(7, 7), 4)) +
                        id3_frame("TIT2", "\0abc"s) +
                        id3_frame("APIC", "\1image/jpeg\0\3\xFF\xFEK\0\0\1\0\0"s + cover) +
                        std::string(100, '\0')) +
             "\xFF\xFB",
         "cover 500x480, cover 7x7, cover 32x32"},
        {"MP3 2.3, unsynchronised",
         id3_tag(3,
                 unsynchronised(id3_frame("TIT2", "\1\xFF\xFE"s + "a\0"s) +
                                id3_frame("APIC", attached(cover))),
                 '\x80'),
         "cover 500x480 copied"},
        {"MP3 2.3, compressed, grouped, with an extended header",
         id3_tag(3,
                 big32(6) + std::string(6, '\0') +
                     id3_frame("APIC", big32(9) + "g" + deflated(attached(cover)), 0xA0) +
                     id3_frame("APIC", "g" + attached(small_jpeg(8, 8)), 0x20) +
                     id3_frame("APIC", "e" + attached(small_jpeg(9, 9)), 0x40),
                 '\x40'),
         "cover 500x480 copied, cover 8x8"},
        {"MP3 2.4, seven bits, unsynchronised, with a footer",
         id3_tag(4,
                 seven_bits(6) + "\1\0"s +
                     id3_frame("APIC", attached(cover, 3, std::string(200, 'd')), 0, true) +
                     id3_frame("APIC", big32(9) + unsynchronised(attached(icon, 0)), 3, true),
                 '\x50'),
         "cover 500x480, cover 32x32 copied"},
        {"MP3 2.4, eight bits as some write them",
         id3_tag(4, id3_frame("APIC", attached(cover, 3, std::string(200, 'd'))) +
                        id3_frame("APIC", attached(icon, 0))),
         "cover 500x480, cover 32x32"},
        {"FLAC", flac_file(), "cover 500x480, cover 32x32"},
        {"FLAC behind a tag", id3_tag(4, id3_frame("TIT2", "\0a"s, 0, true)) + flac_file(),
         "cover 500x480, cover 32x32"},
        {"Vorbis",
         ogg_file({"\1vorbis"s, "\3vorbis" + vorbis_comments({"TITLE=a", comment}), "\5vorbis"s}),
         "cover 500x480 copied"},
        {"Opus", ogg_file({"OpusHead"s, "OpusTags" + vorbis_comments({comment}), "sound"s}),
         "cover 500x480 copied"},
        {"FLAC in Ogg",
         ogg_file({"\x7F\x46LAC\1"s, flac_block(4, vorbis_comments({"A=b"})),
                   flac_block(6, flac_picture(cover), true), "\xFF\xF8"s}),
         "cover 500x480 copied"},
        {"WAV", riff_chunk("RIFF", "WAVE" + riff_chunk("data", "abc") + riff_chunk("id3 ", tag)),
         "cover 500x480"},
        {"AIFF", aiff_chunk("FORM", "AIFF" + aiff_chunk("SSND", "abc") + aiff_chunk("ID3 ", tag)),
         "cover 500x480"},
        {"M4A",
         movie_with(
             itunes(key_item("\xA9nam", 1, "name") +
                    box("covr", box("name", "cover") + box("data", big32(14) + big32(0) + icon) +
                                    box("data", big32(0) + big32(0) + cover)))),
         "cover 32x32, cover 500x480"},
        {"MOV", movie_with(quicktime_key("com.apple.quicktime.artwork", cover)), "cover 500x480"},
        {"MOV with a compressed header",
         file_type +
             box("moov",
                 box("cmov",
                     box("dcom", "zlib") +
                         box("cmvd",
                             big32(9000) +
                                 deflated(box("moov", movie_header() + track() +
                                                          itunes(key_item("covr", 13, cover))))))),
         "cover 500x480 copied"},
    };
}

std::vector<Sample> all_samples() {
    std::vector<Sample> all = raw_photographs();
    for (Sample& each : music())
        all.push_back(std::move(each));
    return all;
}

// What holds for any file, sound or not.
void expect_sound(const std::string& file, const char* name, std::size_t at) {
    const auto pictures = pictures_in(file);
    ASSERT_TRUE(pictures) << name << at;
    for (const EmbeddedPicture& each : *pictures) {
        EXPECT_TRUE(each.bytes.empty() ? each.offset + each.size <= file.size() && each.offset > 0
                                       : each.size == each.bytes.size())
            << name << at;
        EXPECT_GT(each.width * each.height, 0U) << name << at;
    }
}

} // namespace

TEST(Previews, OfRawPhotographsAndImages) {
    for (const Sample& each : raw_photographs())
        EXPECT_EQ(found_in(each.file), each.pictures) << each.name;
}

TEST(Previews, CoversOfMusicAndMovies) {
    for (const Sample& each : music())
        EXPECT_EQ(found_in(each.file), each.pictures) << each.name;
}

TEST(Previews, AreNoneWherePicturesAreSomethingElse) {
    TagFile pages(ByteOrder::Little);
    const auto second = pages.directory(pages.strip(7, small_jpeg(800, 600)));
    pages.finish(pages.jpeg_fields(small_jpeg(160, 120)), second);
    const auto raw = [](const TiffFields& more, const std::string& picture) {
        TagFile file(ByteOrder::Big, 42, "CR\2\0"s);
        return file.finish(file.strip(7, picture, more));
    };
    const auto cover = [](const std::string& picture) {
        return id3_tag(3, id3_frame("APIC", attached(picture)));
    };
    const std::string jpeg = small_jpeg(40, 30);
    EXPECT_EQ(found_in(raw({}, jpeg)), "40x30");
    for (const std::string& file :
         {""s, "MM text"s, jpeg, small_png(3, 3), pages.bytes,
          raw({TagFile::number(262, 32803)}, jpeg), raw({TagFile::number(254, 2)}, jpeg),
          raw({TagFile::number(347, 8)}, jpeg), raw({}, small_jpeg(40, 30, SegmentMarker::Sof3)),
          raw({}, small_jpeg(40, 30, SegmentMarker::Sof0, 12)), raw({}, small_jpeg(40, 0)),
          raw({}, jpeg.substr(0, 40)), raw({}, "no picture"), cover("GIF89a"), cover(""),
          cover(jpeg).substr(0, 60), cover("-->"s), movie_with(""),
          movie_with(itunes(key_item("\xA9nam", 13, jpeg)))})
        EXPECT_EQ(found_in(file), "");
}

TEST(Previews, ChoiceIsTheSmallestThatIsLargeEnough) {
    const auto chosen = [](const std::string& file, std::uint32_t wanted) {
        const auto pictures = pictures_in(file);
        const EmbeddedPicture* const choice = choose(*pictures, wanted);
        return choice == nullptr ? "none" : sides(*choice);
    };
    EXPECT_EQ(chosen("", 80), "none");
    EXPECT_EQ(chosen(dng(), 80), "256x171");
    EXPECT_EQ(chosen(dng(), 256), "256x171");
    EXPECT_EQ(chosen(dng(), 257), "1024x683");
    EXPECT_EQ(chosen(dng(), 5000), "1024x683");
    // The small ones have black bars.
    EXPECT_EQ(chosen(canon_cr3(), 80), "1620x1080");
    EXPECT_EQ(chosen(canon_cr3(), 1621), "6000x4000");
    EXPECT_EQ(chosen(canon_crw(), 160), "160x120");
    // Whatever their sizes are, the first cover is meant.
    EXPECT_EQ(chosen(flac_file(), 16), "500x480");
    EXPECT_EQ(chosen(id3_tag(3, id3_frame("APIC", attached(small_jpeg(9, 9), 0)) +
                                    id3_frame("APIC", attached(small_jpeg(90, 90), 5))),
                     50),
              "9x9");
}

// Wherever a file ends, and whichever of its bytes are others.
TEST(Previews, OfDamagedFiles) {
    for (const Sample& each : all_samples()) {
        const std::string& whole = each.file;
        for (std::size_t end = 0; end < whole.size(); end += 1 + end / 300)
            expect_sound(whole.substr(0, end), each.name, end);
        for (std::size_t at = 0; at < whole.size(); at += 1 + at / 300)
            for (const char flip : {'\x01', '\xFF'}) {
                std::string changed = whole;
                changed[at] = static_cast<char>(changed[at] ^ flip);
                expect_sound(changed, each.name, at);
            }
    }
}

TEST(Previews, TellThatTheDeviceFails) {
    for (const Sample& each : all_samples()) {
        SCOPED_TRACE(each.name);
        expect_that_failing_reads_are_told(
            each.file, [](ByteSource& source) { return find_pictures(source); });
    }
}

// Directories that name one another and themselves are read once, many names of one picture give
// one, and neither costs more than the file is long.
TEST(Previews, OfFilesThatLeadInCircles) {
    TagFile file(ByteOrder::Little, 42, "CR\2\0"s);
    const std::string picture = small_jpeg(40, 30);
    const auto at = file.add(picture);
    const std::uint32_t first = at + length_of(picture) + length_of(picture) % 2;
    std::string table;
    constexpr std::uint32_t count = 500;
    constexpr std::uint32_t directory_size = 2 + 4 * 12 + 4;
    for (std::uint32_t i = 0; i < count; ++i)
        table += file.directory_bytes(
            {TagFile::number(513, at), TagFile::number(514, length_of(picture)),
             TagFile::number(330, first), TagFile::number(34665, first + i * directory_size)},
            first + (i + 1) % count * directory_size);
    ASSERT_EQ(file.add(table), first);
    const std::string whole = file.finish(first);
    WatchedSource source(whole);
    const auto found = find_pictures(source);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->size(), 1U);
    EXPECT_LT(source.reads, 2000U);
}

// Items that are the same bytes again and again, and in the end not all there, are not read for
// ever.
TEST(Previews, OfItemsThatAreRepeated) {
    constexpr std::uint16_t count = 300;
    constexpr std::uint32_t large = 1U << 20U;
    std::string places = big16(0x4400) + big16(count);
    std::string information = big16(count);
    std::string thumbnails;
    for (std::uint16_t id = 2; id < 2 + count; ++id) {
        information += full_box("infe", big16(id) + big16(0) + "jpeg\0"s, 2);
        places += big16(id) + big16(0) + big16(0) + big16(2) + big32(0) + big32(large) +
                  big32(large) + big32(large);
        thumbnails += box("thmb", big16(id) + big16(1) + big16(1));
    }
    const std::string file =
        box("ftyp", "heic" + big32(0) + "mif1heic") +
        full_box("meta", full_box("pitm", big16(1)) + full_box("iinf", information) +
                             full_box("iloc", places, 1) + full_box("iref", thumbnails)) +
        std::string(large, 'p');
    CountedBytes source(file);
    const auto found = find_pictures(source);
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->empty());
    EXPECT_GT(source.bytes_read, large);
    EXPECT_LT(source.bytes_read, 20U * large);
}

// Frames and chunks in one file whose pictures are those that other programs take out of it.
TEST(Previews, OfRealFiles) {
    const std::map<std::string, std::string> expected{
        {"FujiFilm.raf", "8x8"},
        {"Panasonic.rw2", "8x8"},
        {"me-psd-8x4x8bit-Grayscale.psd", "8x4"},
        {"mp4parse-mp4parse-tests-metadata.mp4", "413x414"},
        {"mutagen-tests-data-covr-with-name.m4a", "2x2"},
        {"mutagen-tests-data-nero-chapters.m4b", "500x500"},
    };
    const auto paths =
        real_files({"raw", "raw2", "movie", "movie2", "psd", "tiff", "tiff2", "picture", "jpeg"});
    if (paths.empty())
        GTEST_SKIP() << no_real_files;
    std::size_t seen = 0;
    for (const auto& path : paths) {
        const auto pictures = pictures_in(bytes_of(path));
        ASSERT_TRUE(pictures) << path;
        const auto row = expected.find(path.filename().string());
        if (row == expected.end()) {
            EXPECT_TRUE(pictures->empty()) << path;
            continue;
        }
        ++seen;
        ASSERT_FALSE(pictures->empty()) << path;
        for (const std::uint32_t wanted : {80U, 1024U})
            EXPECT_EQ(sides(*choose(*pictures, wanted)), row->second) << path;
    }
    EXPECT_EQ(seen, expected.size());
}

} // namespace vell::pictures
