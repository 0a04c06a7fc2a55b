// Boxes in every form, movies wherever they stand, and what damaged ones cost.
#include "movie_builder.h"
#include "src/formats/isobmff/boxes.h"
#include "src/formats/isobmff/movie.h"

#include <gtest/gtest.h>

namespace vell::formats::isobmff {
namespace {

using namespace vell::test;
using namespace std::string_literals;

struct Walked {
    std::string text; // type, size of the header, bytes that are there of those announced
    std::optional<Damage> damage;
};
Walked walked(std::string_view bytes) {
    BytesInMemory source(bytes);
    BoxWalk walk((Window(source)));
    Walked done;
    for (;;) {
        const auto box = walk.next();
        if (!box) {
            done.damage = box.error().damage;
            return done;
        }
        if (!*box)
            return done;
        done.text += text_of((*box)->type) + " " + to_text((*box)->header_size) + "+" +
                     to_text((*box)->content.size()) + "/" + to_text((*box)->content.announced()) +
                     ((*box)->runs_to_the_end ? " open, " : ", ");
    }
}

std::string description_line(std::string_view text, std::string_view name) {
    const std::string start = "\r" + std::string(name) + ": ";
    const std::string all = "\r" + std::string(text) + "\r";
    const std::size_t at = all.find(start);
    if (at == std::string::npos)
        return "nothing";
    return all.substr(at + start.size(), all.find('\r', at + 1) - at - start.size());
}

// A "moov" in zlib's form, not compressed any further (RFC 1950, RFC 1951 3.2.4).
std::string zlib_stored(std::string_view bytes) {
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : bytes) {
        a = (a + static_cast<unsigned char>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    std::string stored = "\x78\x01\x01"s;
    append_integer<std::uint16_t>(stored, static_cast<std::uint16_t>(bytes.size()),
                                  ByteOrder::Little);
    append_integer<std::uint16_t>(stored, static_cast<std::uint16_t>(~bytes.size()),
                                  ByteOrder::Little);
    return stored + std::string(bytes) + big32(b << 16 | a);
}

TEST(MovieBoxes, HaveSizesOfThreeKindsAndLongTypes) {
    const std::string user_type(16, 'u');
    EXPECT_EQ(walked(box("free", "12345") + big32(1) + "mdat" + big64(18) + "ab" +
                     box("uuid", user_type + "c") + big32(0) + "\xA9nam" + "rest")
                  .text,
              "free 8+5/5, mdat 16+2/2, uuid 24+1/1, \u00A9nam 8+4/4 open, ");
    EXPECT_EQ(walked(big32(100) + "moov" + "ab").text, "moov 8+2/92, ");
    EXPECT_EQ(walked(big32(1) + "mdat" + big64(~0ULL) + "ab").text,
              "mdat 16+2/18446744073709551599, ");
    EXPECT_EQ(walked(box("uuid", "short")).text, "uuid 8+5/5, ");
    EXPECT_EQ(walked(box("\1\2\3\4") + "1234567").text, "0x01020304 8+0/0, ");
    EXPECT_EQ(walked(big32(7) + "free" + box("moov")).damage, Damage::Corrupt);
    EXPECT_EQ(walked(big32(1) + "mdat" + big64(15) + box("moov")).damage, Damage::Corrupt);
    EXPECT_EQ(walked(big32(1) + "mdat" + "1234567").damage, Damage::CutOff);
}

TEST(MovieStructure, StandsBeforeItsMediaBehindItOrOpenToTheEnd) {
    const std::string content = movie_header() + track();
    const std::string media = big32(1) + "mdat" + big64(1016) + std::string(1000, '\0');
    for (const auto& [file, before] : {std::pair(file_type + box("moov", content) + media, "1"),
                                       std::pair(file_type + media + box("moov", content), "0"),
                                       std::pair(media + big32(0) + "moov" + content, "0"),
                                       std::pair(box("free") + box("moov", content), "1")}) {
        const std::string text = answer(file, "-GetMovieDescription");
        EXPECT_EQ(description_line(text, "Plays while loading"), before);
        EXPECT_EQ(description_line(text, "Duration (seconds)"), "2");
        EXPECT_EQ(description_line(text, "Track 1 Frame count"), "50");
        EXPECT_EQ(answer(file, "-IsValidMovie"), "1");
    }
}

TEST(MovieStructure, IsExpandedWhereItIsCompressed) {
    const std::string whole = box("moov", movie_header() + track());
    const auto compressed = [](const std::string& method, const std::string& data) {
        return file_type + box("moov", box("cmov", box("dcom", method) + box("cmvd", data)));
    };
    const std::string size = big32(static_cast<std::uint32_t>(whole.size()));
    const std::string file = compressed("zlib", size + zlib_stored(whole));
    const std::string text = answer(file, "-GetMovieDescription");
    EXPECT_EQ(description_line(text, "Compressed header"), "1");
    EXPECT_EQ(description_line(text, "Track 1 Frame count"), "50");
    EXPECT_EQ(answer(compressed("adec", size + zlib_stored(whole)), "-IsValidMovie"), "-2010");
    EXPECT_EQ(answer(compressed("zlib", size + zlib_stored(whole).substr(0, 40)), "-IsValidMovie"),
              "-2010");
    EXPECT_EQ(answer(compressed("zlib", size + zlib_stored(box("free"))), "-IsValidMovie"),
              "-2010");
}

// Two runs of a track, one with the defaults of "trex", one with its own; one of no track.
TEST(MovieStructure, CountsTheFragments) {
    const std::string extends =
        box("mvex", full_box("mehd", big32(6000)) +
                        full_box("trex", big32(7) + big32(1) + big32(60) + big32(10) + big32(0)));
    const TrackMade empty{.samples = 0, .id = 7};
    const auto fragment = [](std::uint32_t id, const std::string& runs) {
        return box("moof", box("traf", full_box("tfhd", big32(id)) + runs));
    };
    const std::string start =
        file_type + box("moov", movie_header(0, 600, 0) + track(empty) + extends);
    const std::string file =
        start + fragment(7, full_box("trun", big32(10))) +
        fragment(7, full_box("trun", big32(2) + big32(300) + big32(1) + big32(240) + big32(2), 0,
                             0x300)) +
        fragment(8, full_box("trun", big32(1000)));
    const std::string text = answer(file, "-GetMovieDescription");
    EXPECT_EQ(description_line(text, "Fragments"), "3");
    EXPECT_EQ(description_line(text, "Track 1 Frame count"), "12");
    EXPECT_EQ(description_line(text, "Track 1 Duration (seconds)"), "1.9"); // (600 + 540) / 600
    EXPECT_EQ(description_line(text, "Duration (seconds)"), "1.9");
    EXPECT_EQ(description_line(text, "Track 1 Bit rate"), "434"); // 8 * (100 + 3) / 1.9
    // Fragments that are elsewhere are as long as they are said to be.
    EXPECT_EQ(
        answer(file_type + box("moov", movie_header(0, 600, 0) + extends), "-GetMovieDuration"),
        "10");
}

TEST(MovieStructure, NeedsAWholeHeader) {
    EXPECT_EQ(answer("", "-GetMovieDescription"), "-2010");
    EXPECT_EQ(answer(file_type, "-GetMovieDescription"), "-2010");
    EXPECT_EQ(answer(file_type + box("moov", track()), "-GetMovieDuration"), "-2010");
    EXPECT_EQ(answer(file_type + box("moov", box("mvhd", "short") + track()), "-GetMovieWidth"),
              "-2010");
    EXPECT_EQ(answer(file_type + box("moov", movie_header()), "-IsValidMovie"), "-2026");
    EXPECT_EQ(answer(file_type + box("moov", movie_header()), "-GetMovieWidth"), "-2026");
    EXPECT_EQ(answer(movie_with(""), "-GetMovieMetadata"), "-2026");
    EXPECT_EQ(answer(movie_with(""), "-GetTimeCodeBegin"), "-2026");
}

// Three samples in a second. What no sizes tell, the entry does.
TEST(MovieStructure, HasTheBitRateOfCompactSizes) {
    const std::string times = full_box("stts", big32(1) + big32(3) + big32(200));
    const auto rate = [&](std::uint32_t bits, const std::string& sizes, const std::string& entry) {
        const TrackMade made{.entry = picture_entry("avc1", entry),
                             .tables = times + full_box("stz2", big32(bits) + big32(3) + sizes)};
        return description_line(
            answer(file_type + box("moov", movie_header() + track(made)), "-GetMovieDescription"),
            "Track 1 Bit rate");
    };
    const std::string told = box("btrt", big32(1) + big32(9000) + big32(5000));
    EXPECT_EQ(rate(4, "\x12\xF0", told), "144");
    EXPECT_EQ(rate(8, "\1\2\xFF", told), "2064");
    EXPECT_EQ(rate(16, "\0\1\0\2\1\0"s, told), "2072");
    EXPECT_EQ(rate(16, "\0\1\0\2\1"s, told), "5000"); // cut off
    EXPECT_EQ(rate(3, "\1\2\3", told), "5000");       // there are no such sizes
    EXPECT_EQ(rate(3, "\1\2\3", ""), "nothing");
}

// Tables that say that they have 2^32 - 1 entries, and have one.
TEST(MovieStructure, BelievesNoTableThatIsShorterThanItSays) {
    const std::string count = big32(~0U);
    const std::string one(8, '\1');
    const TrackMade made{.tables = full_box("stts", count + one) +
                                   full_box("stsz", big32(0) + count + one) +
                                   full_box("stco", count + one)};
    const std::string run = box(
        "moof", box("traf", full_box("tfhd", big32(1)) + full_box("trun", count + one, 0, 0x300)));
    const std::string file = file_type + box("moov", movie_header() + track(made)) + run;
    WatchedSource source(file);
    const std::string text = answer(source, "-GetMovieDescription");
    EXPECT_LT(source.reads, 150U);
    EXPECT_EQ(description_line(text, "Track 1 Duration (seconds)"), "2"); // of the header
    EXPECT_EQ(description_line(text, "Track 1 Bit rate"), "nothing");
    // The number of samples needs no table.
    EXPECT_EQ(description_line(text, "Track 1 Frame count"), "4294967295");
    // Sums stay at their greatest value.
    std::string long_times = big32(64);
    for (int i = 0; i < 64; ++i)
        long_times += big32(~0U) + big32(~0U);
    const TrackMade endless{.tables = full_box("stts", long_times)};
    EXPECT_EQ(description_line(answer(file_type + box("moov", movie_header() + track(endless)),
                                      "-GetMovieDescription"),
                               "Track 1 Duration (seconds)"),
              "3.074457346e+16");
}

TEST(MovieStructure, ReadsEachBoxASmallNumberOfTimes) {
    constexpr std::uint64_t count = 200'000;
    std::string boxes;
    for (std::uint64_t i = 0; i < count; ++i)
        boxes += "\0\0\0\x08"
                 "free"s;
    const std::string file = file_type + box("moov", movie_header() + boxes);
    for (const char* switches : {"-GetMovieDescription", "-GetMovieMetadata"}) {
        WatchedSource source(file);
        answer(source, switches);
        EXPECT_LT(source.reads, 3 * count + 100) << switches;
    }
    // Nor does each name of a free item make all that stands behind it longer.
    std::string names;
    for (int i = 0; i < 1000; ++i)
        names += full_box("name", std::string(1000, 'n'));
    const std::string free_item =
        movie_with(itunes(box("----", names + box("data", big32(1) + big32(0) + "v"))));
    EXPECT_EQ(answer(free_item, "-GetMovieMetadata").size(), 1000U + 3);
}

// All of a small movie: each part of it is there, or missing, or tells a code.
std::string movie_with_everything() {
    const std::string location = "\x15\xC7"s + "Wien\0"s + "\0"s + big32(0x00100000) +
                                 big32(0x00300000) + big32(0) + "earth\0notes\0"s;
    const TrackMade codes{
        .handler = "tmcd",
        .entry = box("tmcd", std::string(12, '\0') + big32(0) + big32(600) + big32(24) + "\x19\0"s),
        .samples = 1,
        .chunk = 32,
        .more = box("udta", box("name", "Codes"))};
    return file_type + box("mdat", big32(90000)) +
           box("moov", movie_header(3'000'000'000) + track() + track(codes) +
                           itunes(key_item("\xA9nam", 1, "Title") +
                                  box("----", full_box("mean", "com.a") + full_box("name", "b") +
                                                  box("data", big32(21) + big32(0) + "\xFF"))) +
                           quicktime_key("com.apple.quicktime.location.ISO6709", "+48.2+016.3/") +
                           box("udta", user_text("cpy", "Owner", 0) + full_box("loci", location) +
                                           big32(0)));
}

TEST(MovieStructure, HasAnAnswerOrACodeWhereverItIsCutOff) {
    const std::string whole = movie_with_everything();
    EXPECT_EQ(answer(whole, "-GetTimeCodeBegin"), "01:00:00:00");
    EXPECT_EQ(answer(whole, "-GetMovieTitle -GetMovieGPS"), "+48.2+016.3/");
    for (const char* switches :
         {"-GetMovieDescription", "-GetMovieMetadata -Verbose", "-GetMovieMetadata -Format=XML",
          "-GetMovieGPS -Format=DegMinSecs", "-GetMovieCreationDate", "-GetTimeCodeEnd"}) {
        const std::string all = answer(whole, switches);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // Where it ends so does the file: a read beyond it is seen by the sanitizers.
            const std::vector<char> bytes(whole.begin(), whole.begin() + static_cast<long>(size));
            const std::string text = answer(std::string_view(bytes.data(), bytes.size()), switches);
            EXPECT_TRUE(text == "-2010" || text == "-2026" || (text.size() > 5 && text[0] != '-'))
                << switches << " of " << size << ": " << text;
            EXPECT_LE(text.size(), all.size() + 20) << size;
        }
    }
}

TEST(MovieStructure, PassesOnEachFailureOfItsSource) {
    const std::string whole = movie_with_everything();
    for (const char* switches : {"-GetMovieDescription", "-GetMovieMetadata", "-GetMovieGPS",
                                 "-GetMovieCreationDate", "-GetTimeCodeEnd"}) {
        WatchedSource source(whole);
        answer(source, switches);
        for (std::uint64_t i = 0; i < source.reads; ++i) {
            WatchedSource failing(whole);
            failing.failing_read = i;
            EXPECT_EQ(answer(failing, switches), to_text(std::int64_t{number(failing.failure)}))
                << switches << ", read " << i;
        }
    }
}

TEST(MovieStructure, ReadsNothingOfItsMedia) {
    const std::string whole = movie_with_everything();
    for (const char* switches : {"-GetMovieDescription", "-GetMovieMetadata", "-GetMovieGPS",
                                 "-GetMovieCreationDate", "-IsValidMovie"}) {
        WatchedSource source(whole);
        source.forbidden_start = 32;
        source.forbidden_end = 36;
        EXPECT_EQ(answer(source, switches), answer(whole, switches));
    }
}

} // namespace
} // namespace vell::formats::isobmff
