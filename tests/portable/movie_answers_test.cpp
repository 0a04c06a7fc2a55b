// What movies answer: pictures and sound, items of every kind, positions, dates, time codes.
#include "movie_builder.h"
#include "src/movies/iso6709.h"
#include "src/movies/time_code.h"

#include <gtest/gtest.h>

namespace vell::movies {
namespace {

using namespace vell::test;
using namespace std::string_literals;

std::string with_track(const TrackMade& made) {
    return file_type + box("moov", movie_header() + track(made));
}

TEST(MovieAnswers, TurnPicturesAsTheMatrixSays) {
    struct {
        Matrix matrix;
        const char* rotation;
        const char* shown;
    } const cases[] = {{{1, 0, 0, 1}, "0", nullptr},
                       {{0, 1, -1, 0}, "90", "Shown width: 480\rShown height: 640\r"},
                       {{-1, 0, 0, -1}, "180", nullptr},
                       {{0, -1, 1, 0}, "270", "Shown width: 480\rShown height: 640\r"},
                       {{0, 0, 0, 0}, "0", nullptr}};
    for (const auto& [matrix, rotation, shown] : cases) {
        const std::string file = with_track({.matrix = matrix});
        EXPECT_EQ(answer(file, "-GetMovieRotation"), rotation);
        EXPECT_EQ(answer(file, "-GetMovieWidth"), "640"); // as they are coded
        const std::string text = answer(file, "-GetMovieDescription");
        EXPECT_EQ(text.find("\rShown") != std::string::npos, shown != nullptr);
        EXPECT_NE(text.find(shown == nullptr ? "\rRotation" : shown), std::string::npos) << text;
    }
}

TEST(MovieAnswers, AreObjectsInJson) {
    const std::string file = with_track({.matrix = {0, 1, -1, 0}});
    const std::string json = json_answer(file, "-GetMovieDescription");
    EXPECT_TRUE(json.starts_with(R"({"Movie":{"Format":)")) << json;
    EXPECT_NE(json.find(R"("Width":640,"Height":480,"ShownWidth":480,"ShownHeight":640,)"
                        R"("Rotation":90,)"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"("Tracks":[{"Kind":)"), std::string::npos) << json;
    EXPECT_NE(json.find(R"("Enabled":true)"), std::string::npos) << json;
    EXPECT_EQ(json_answer("no movie", "-GetMovieDescription"), "-2010");
}

TEST(MovieAnswers, AreOfTheFirstEnabledTrackWithPictures) {
    const std::string tracks = track({.handler = "soun", .entry = sound_entry("sowt", "")}) +
                               track({.samples = 1, .flags = 0}) + track({.samples = 2});
    EXPECT_EQ(answer(file_type + box("moov", movie_header() + tracks), "-GetMovieFrameCount"), "2");
    EXPECT_EQ(answer(with_track({.samples = 1, .flags = 0}), "-GetMovieFrameCount"), "1");
    EXPECT_EQ(answer(with_track({.handler = "soun", .entry = sound_entry("sowt", "")}),
                     "-GetMovieFrameCount"),
              "-2026");
}

std::string decoder_box(std::string_view configuration, char object_type = 0x40) {
    const auto descriptor = [](char tag, const std::string& content) {
        return std::string(1, tag) + "\x80" + static_cast<char>(content.size()) + content;
    };
    return full_box(
        "esds",
        descriptor(3, big16(1) + "\0"s +
                          descriptor(4, std::string(1, object_type) + std::string(12, '\0') +
                                            descriptor(5, std::string(configuration)))));
}

TEST(MovieAnswers, HaveTheSoundThatTheDecoderIsTold) {
    const std::string alac =
        full_box("alac", std::string(9, '\0') + "\6" + std::string(10, '\0') + big32(192'000));
    const std::string flac =
        full_box("dfLa", "\x80\0\0\x22"s + std::string(10, '\0') + big32(96'000U << 12 | 1U << 9));
    struct {
        const char* what;
        std::string entry;
        const char* sound; // channels and rate
    } const cases[] = {
        {"the entry alone", sound_entry("sowt", ""), "2 44100"},
        {"AAC", sound_entry("mp4a", decoder_box("\x11\x88")), "1 48000"},
        {"any rate", sound_entry("mp4a", decoder_box("\x17\x80\x0B\xB8\x38"s)), "8 6000"},
        {"bands doubled", sound_entry("mp4a", decoder_box("\x2B\x09\x88"s)), "1 48000"},
        {"stereo from one", sound_entry("mp4a", decoder_box("\xEB\x09\x88"s)), "2 48000"},
        {"hidden bands", sound_entry("mp4a", decoder_box("\x13\x10\x56\xE5\x98")), "2 48000"},
        {"no AAC", sound_entry("mp4a", decoder_box("\x11\x88", 0x6B)), "2 44100"},
        {"torn", sound_entry("mp4a", decoder_box("\x11")), "2 44100"},
        {"in QuickTime's wave",
         box("mp4a", std::string(8, '\0') + big16(1) + std::string(6, '\0') + big16(2) + big16(16) +
                         big32(0) + big32(0xAC440000) + std::string(16, '\0') +
                         box("wave", box("frma", "mp4a") + decoder_box("\x11\x88"))),
         "1 48000"},
        {"encrypted",
         sound_entry("enca", decoder_box("\x11\x88") + box("sinf", box("frma", "mp4a"))),
         "1 48000"},
        {"ALAC", sound_entry("alac", alac), "6 192000"},
        {"Opus", sound_entry("Opus", box("dOps", "\0\6\0\0\0\0\x3E\x80"s)), "6 48000"},
        {"FLAC", sound_entry("fLaC", flac), "2 96000"},
        {"AC-3", sound_entry("ac-3", box("dac3", "\x50\x3D\x40")), "6 44100"},
        {"Enhanced AC-3", sound_entry("ec-3", box("dec3", "\0\0\x20\x0F\0"s)), "6 48000"},
        {"AMR", sound_entry("sawb", ""), "1 16000"},
        {"a rate of its own", sound_entry("ipcm", full_box("srat", big32(384'000))), "2 384000"},
        {"QuickTime's version 2",
         box("lpcm", std::string(8, '\0') + big16(2) + std::string(18, '\0') + big32(72) +
                         big64(0x40F7700000000000) + big32(3) + big32(0x7F000000) + big32(24) +
                         std::string(12, '\0')),
         "3 96000"},
        {"a rate that is no number",
         box("lpcm", std::string(8, '\0') + big16(2) + std::string(18, '\0') + big32(72) +
                         big64(0x7FF8000000000000) + big32(3) + std::string(20, '\0')),
         "3 nothing"},
    };
    for (const auto& [what, entry, sound] : cases) {
        const std::string text =
            answer(with_track({.handler = "soun", .entry = entry}), "-GetMovieDescription") + "\r";
        const auto value = [&](const std::string& name) {
            const std::size_t at = text.find(name);
            return at == std::string::npos
                       ? "nothing"
                       : text.substr(at + name.size(), text.find('\r', at) - at - name.size());
        };
        EXPECT_EQ(value("Channels: ") + " " + value("Sample rate: "), sound) << what;
    }
}

std::string items_of(std::string_view boxes) {
    return answer(movie_with(boxes), "-GetMovieMetadata");
}

TEST(MovieItems, HaveValuesOfEveryType) {
    struct {
        std::uint32_t type;
        std::string value;
        const char* text;
    } const cases[] = {
        {1, "Gr\u00FC\u00DFe\0more"s, "Gr\u00FC\u00DFe"},
        {1, "caf\xE9", "{4}caf\xE9"}, // whatever it is, it is no UTF-8
        {2, "\0G\0\xFC"s, "G\u00FC"},
        {2, "\xFE\xFF\0G"s, "G"},
        {2, "\xFF\xFEG\0"s, "G"},
        {3, "\x83\x65", "{6}\x83\x65"},
        {13, "123", "(JPEG picture, 3 bytes)"},
        {14, "123", "(PNG picture, 3 bytes)"},
        {21, "\xFF", "-1"},
        {21, "\xFF\xFE", "-2"},
        {21, "\xFF\xFF\xFD", "-3"},
        {21, big64(~0ULL), "-1"},
        {21, "", "(0 bytes)"},
        {22, "\xFF\xFF", "65535"},
        {22, big64(~0ULL), "18446744073709551615"},
        {22, "123456789", "(9 bytes)"},
        {23, big32(0x3FC00000), "1.5"},
        {24, big64(0xBFF8000000000000), "-1.5"},
        {24, "1234", "(4 bytes)"},
        {65, "\x80", "-128"},
        {66, big16(0x8000), "-32768"},
        {67, big32(0x80000000), "-2147483648"},
        {70, big32(0x3F800000) + big32(0x40000000), "1 2"},
        {72, std::string(16, '\0'), "0 0 0 0"},
        {74, big64(~1ULL), "-2"},
        {75, "\x80", "128"},
        {78, big64(1ULL << 63), "9223372036854775808"},
        {79, big64(0x3FF0000000000000) + big64(0), "1 0"},
        {0, "plain", "plain"},
        {0, "\1\2", "258"},
        {0, "\1\2\3\4\5\6\7\x08\x09", "(9 bytes)"},
        {999, "text", "text"},
    };
    for (const auto& [type, value, text] : cases)
        EXPECT_EQ(items_of(itunes(key_item("\xA9nam", type, value))), "Title: "s + text)
            << type << ", " << text;
    EXPECT_EQ(items_of(itunes(key_item("trkn", 0, "\0\0\0\3\0\6\0\0"s) +
                              key_item("disk", 0, "\0\0\0\2"s) + key_item("gnre", 0, "\0\x12"s) +
                              key_item("cpil", 21, "\1") + key_item("abcd", 1, "new"))),
              "Track number: 3 of 6\rDisk number: 2\rGenre: Rock\rCompilation: 1\rabcd: new");
    EXPECT_EQ(items_of(itunes(box("covr", box("data", big32(13) + big32(0) + "1") + box("name") +
                                              box("data", big32(14) + big32(0) + "12")))),
              "Cover: (JPEG picture, 1 bytes)\rCover: (PNG picture, 2 bytes)");
}

TEST(MovieItems, AreFoundInEachOfTheirPlaces) {
    const std::string free = box("----", full_box("mean", "com.a") + full_box("name", "b") +
                                             box("data", big32(1) + big32(0) + "1") +
                                             box("data", big32(1) + big32(0) + "2"));
    EXPECT_EQ(items_of(itunes(free)), "com.a:b: 1\rcom.a:b: 2");
    EXPECT_EQ(items_of(quicktime_key("com.apple.quicktime.title", "T") +
                       quicktime_key("com.example.note", "N")),
              "Title: T\rcom.example.note: N");
    const std::string xmp_type = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";
    EXPECT_EQ(answer(box("uuid", xmp_type + "<x/>") + box("uuid", std::string(16, 'u') + "?") +
                         movie_with(track({.more = box("udta", box("name", "caf\x8E"))})),
                     "-GetMovieMetadata"),
              "XMP: <x/>\rTrack 2 Name: {4}caf\x8E");
    // Lists of QuickTime end with a zero, behind which nothing counts.
    EXPECT_EQ(items_of(box("udta", user_text("nam", "T", 0) + big32(0) + user_text("ART", "A", 0))),
              "Title: T");
    EXPECT_EQ(items_of(box("udta", full_box("titl", big16(0x15C7) + "T", 2) +
                                       full_box("titl", big16(0x15C7) + "T", 3)) +
                       full_box("meta", "", 3)),
              "Title: T\rTitle: Moviebox version too high, skipped moviebox\r"
              "meta: Moviebox version too high, skipped moviebox");
    EXPECT_EQ(items_of(box("udta", full_box("chpl",
                                            big32(0) + "\2" + big64(0) + "\3One" +
                                                big64(37'230'010'000) + "\3Two",
                                            1))),
              "Chapters: 00:00:00.000 One\r01:02:03.001 Two");
}

TEST(MovieItems, HaveTextsInTheEncodingOfTheirLanguage) {
    const auto text = [](std::string_view bytes, std::uint16_t language) {
        return answer(movie_with(box("udta", user_text("nam", bytes, language))),
                      "-GetMovieMetadata -Verbose")
            .substr(std::string_view("Title [user data, \u00A9nam, ").size());
    };
    EXPECT_EQ(text("caf\x8E", 0), "eng]: {4}caf\x8E");
    EXPECT_EQ(text("\x83\x65", 11), "jpn]: {6}\x83\x65");
    EXPECT_EQ(text("\x8F\xF0", 32), "rus]: {15}\x8F\xF0");
    EXPECT_EQ(text("\u65E5", 11), "jpn]: \u65E5"); // is UTF-8, whatever its language
    EXPECT_EQ(text("caf\u00E9", 0x15C7), "eng]: caf\u00E9");
    EXPECT_EQ(text("\xFE\xFF\x65\xE5", 0x2A0E), "jpn]: \u65E5");
    EXPECT_EQ(text("x", 0x7FFF), "und]: x");
    // Several in one box; one alone, without its length; a value as in iTunes' lists.
    const std::string two = user_text("nam", "A", 0).substr(8) + user_text("nam", "B", 2).substr(8);
    EXPECT_EQ(items_of(box("udta", box("\xA9nam", two))), "Title: A\rTitle: B");
    EXPECT_EQ(items_of(box("udta", box("\xA9nam", "Only text"))), "Title: Only text");
    EXPECT_EQ(items_of(box("udta", box("\xA9nam", box("data", big32(2) + big32(0) + "\0T"s)))),
              "Title: T");
}

TEST(MovieItems, AreThoseOf3gpp) {
    const std::string english = big16(0x15C7);
    EXPECT_EQ(
        items_of(box("udta", full_box("titl", english + "\xFE\xFF\0T\0\0"s) +
                                 full_box("albm", english + "Album\0\7"s) +
                                 full_box("yrrc", big16(2004)) +
                                 full_box("kywd", english + "\2\2a\0\2b\0"s) +
                                 full_box("rtng", "MPAA" + big32(0) + english + "PG\0"s) +
                                 full_box("clsf", "abcd" + big16(1) + english + "Class\0"s) +
                                 full_box("perf", "\x15"))),
        "Title: T\rAlbum: Album\rYear: 2004\rKeywords: a, b\rRating: PG\rClassification: Class");
}

// "loci": longitude before latitude.
std::string location(double latitude, double longitude, const std::string& name) {
    const auto fixed = [](double number) {
        return big32(static_cast<std::uint32_t>(static_cast<std::int32_t>(number * 65536)));
    };
    return box("udta", full_box("loci", big16(0x15C7) + name + "\1"s + fixed(longitude) +
                                            fixed(latitude) + fixed(171.5) + "earth\0\0"s));
}

TEST(MoviePositions, ComeFromThreeSourcesInEveryForm) {
    const std::string text = "+48.2082-016.3738+171.5/";
    for (const std::string& boxes : {box("udta", user_text("xyz", text, 0x15C7)),
                                     quicktime_key("com.apple.quicktime.location.ISO6709", text)}) {
        EXPECT_EQ(answer(movie_with(boxes), "-GetMovieGPS"), text);
        EXPECT_EQ(answer(movie_with(boxes), "-GetMovieGPS -Format=ISO6709"), text);
        EXPECT_EQ(answer(movie_with(boxes), "-GetMovieGPS -Format=Decimal"),
                  "Latitude: 48.2082\rLongitude: -16.3738\rAltitude: 171.5");
        EXPECT_EQ(answer(movie_with(boxes), "-GetMovieGPS -Format=DegMinSecs"),
                  "Latitude: 48\u00B0 12' 29.52\" N\rLongitude: 16\u00B0 22' 25.68\" W\r"
                  "Altitude: 171.5 m");
    }
    EXPECT_EQ(answer(movie_with(location(48.25, -16.5, "Wien\0"s)), "-GetMovieGPS -Format=Decimal"),
              "Latitude: 48.25\rLongitude: -16.5\rAltitude: 171.5");
    EXPECT_EQ(items_of(location(48.25, -16.5, "\xFE\xFF\0W\0\0"s)),
              "Location: +48.25-016.5+171.5/ (W)");
    // A key counts most, then a text.
    const std::string place = location(1, 2, "\0"s);
    const std::string user = box("udta", user_text("xyz", "+03+004/", 0));
    const std::string key = quicktime_key("com.apple.quicktime.location.ISO6709", "+05+006/");
    EXPECT_EQ(answer(movie_with(place + user), "-GetMovieGPS"), "+03+004/");
    EXPECT_EQ(answer(movie_with(place + user + key), "-GetMovieGPS"), "+05+006/");
    // What is no position is passed over.
    EXPECT_EQ(answer(movie_with(location(91, 0, "\0"s) + box("udta", user_text("xyz", "here", 0)) +
                                box("udta", user_text("xyz", "+01+002", 0))),
                     "-GetMovieGPS -Format=Decimal"),
              "Latitude: 1\rLongitude: 2");
    EXPECT_EQ(answer(movie_with(box("udta", user_text("xyz", "here", 0))), "-GetMovieGPS"),
              "-2026");
}

TEST(MoviePositions, AreReadAsIso6709WritesThem) {
    const auto read = [](std::string_view text) {
        const auto position = movies::parse_iso6709(text);
        return position ? movies::iso6709_text(*position) : "nothing";
    };
    EXPECT_EQ(read("+4812.5-01622.5/"), "+48.20833333-016.375/");
    EXPECT_EQ(read("-481230+0162230-10.25/"), "-48.20833333+016.375-10.25/");
    EXPECT_EQ(read("+90-180/"), "+90-180/");
    for (const char* none : {"", "48+16", "+48", "+48+", "+91+0", "+48-180.5", "+4860+01600/",
                             "+481260+0160000/", "+4.8.2+16", "+123456789+1"})
        EXPECT_EQ(read(none), "nothing") << none;
    // An altitude that is none does not spoil the rest.
    EXPECT_EQ(read("+48+016+99999999999999999999/"), "+48+016/");
    EXPECT_EQ(movies::degrees_minutes_seconds(-59.99999999, 'N', 'S'), "60\u00B0 0' 0\" S");
}

TEST(MovieDates, ComeFromItemsThenFromTheHeader) {
    const auto date = [](std::uint32_t created, std::string_view boxes) {
        return answer(file_type + box("moov", movie_header(created) + std::string(boxes)),
                      "-GetMovieCreationDate");
    };
    EXPECT_EQ(date(3'646'801'557, ""), "2019-07-24T08:25:57Z");
    EXPECT_EQ(date(1'563'956'757, ""), "2019-07-24T08:25:57Z"); // counted from 1970
    EXPECT_EQ(date(0, ""), "-2026");
    const std::string key = "com.apple.quicktime.creationdate";
    const std::string day = itunes(key_item("\xA9"
                                            "day",
                                            1, "2001-02-03"));
    EXPECT_EQ(date(3'646'801'557, day + quicktime_key(key, "2019-07-24T11:25:40.50+0300")),
              "2019-07-24T11:25:40.50+03:00");
    EXPECT_EQ(date(3'646'801'557, day), "2001-02-03");
    EXPECT_EQ(date(0, quicktime_key(key, "2019:07:24 11:25Z")), "2019-07-24T11:25:00Z");
    EXPECT_EQ(date(0, quicktime_key(key, "20190724T11:25:40.+02")), "2019-07-24T11:25:40+02:00");
    const std::string year = itunes(key_item("\xA9"
                                             "day",
                                             1, "2001"));
    EXPECT_EQ(date(3'646'801'557, year), "2019-07-24T08:25:57Z"); // names a day
    EXPECT_EQ(date(0, year + quicktime_key(key, "2019-13-24")), "2019-13-24");
    const std::string wide =
        full_box("mvhd", big64(3'646'801'557) + big64(~0ULL) + big32(600) + big64(~0ULL), 1);
    EXPECT_EQ(answer(file_type + box("moov", wide), "-GetMovieCreationDate"),
              "2019-07-24T08:25:57Z");
}

TEST(MovieTimeCodes, CountFramesAsTheirFlagsSay) {
    using Format = formats::isobmff::TimeCodeEntryRecord;
    const Format dropping{Format::drop_frame, 30'000, 1001, 30};
    const Format plain{0, 600, 24, 25};
    struct {
        std::int64_t frame;
        Format format;
        const char* text;
    } const cases[] = {
        {1799, dropping, "00:00:59;29"},
        {1800, dropping, "00:01:00;02"},
        {17'981, dropping, "00:09:59;29"},
        {17'982, dropping, "00:10:00;00"},
        {107'892, dropping, "01:00:00;00"},
        {1800, {1, 60'000, 1001, 60}, "00:00:30;00"},
        {3600, {1, 60'000, 1001, 60}, "00:01:00;04"},
        {90'000, plain, "01:00:00:00"},
        {24 * 90'000 + 1, plain, "24:00:00:01"},
        {24 * 90'000 + 1, {2, 600, 24, 25}, "00:00:00:01"},
        {-26, plain, "-00:00:01:01"},
        {90'000, {8, 600, 24, 25}, "90000"},
        {5, {0, 0, 0, 0}, "5"},
        {100, {1, 600, 24, 25}, "00:00:04:00"},
    };
    for (const auto& [frame, format, text] : cases)
        EXPECT_EQ(movies::time_code_text(frame, format), text);
}

TEST(MovieTimeCodes, BeginWithTheFirstSampleAndEndBehindTheLast) {
    const auto file = [](std::uint32_t flags, std::uint32_t sample, std::uint32_t chunk) {
        const TrackMade made{.handler = "tmcd",
                             .entry = box("tmcd", std::string(12, '\0') + big32(flags) +
                                                      big32(600) + big32(24) + "\x19\0"s),
                             .chunk = chunk};
        return file_type + box("mdat", big32(sample)) + box("moov", movie_header() + track(made));
    };
    EXPECT_EQ(answer(file(0, 90'000, 32), "-GetTimeCodeBegin"), "01:00:00:00");
    EXPECT_EQ(answer(file(0, 90'000, 32), "-GetTimeCodeCurrent"), "01:00:00:00");
    EXPECT_EQ(answer(file(0, 90'000, 32), "-GetTimeCodeEnd"), "01:00:02:00");
    EXPECT_EQ(answer(file(4, ~0U, 32), "-GetTimeCodeBegin"), "-00:00:00:01");
    EXPECT_EQ(answer(file(0, 0, 0x7FFFFFFF), "-GetTimeCodeBegin"), "-2026");
}

TEST(MovieSelectors, PreferTheBestNameThenTheFirstOfIt) {
    const std::string boxes =
        track({.more = box("udta", user_text("nam", "of the track", 0))}) +
        quicktime_key("com.apple.quicktime.displayname", "Display") +
        itunes(key_item("\xA9too", 1, "Encoder") + key_item("ldes", 1, "Long") +
               key_item("\xA9"
                        "day",
                        1, "early") +
               key_item("\xA9"
                        "des",
                        1, "Short") +
               key_item("\xA9nam", 1, "") + key_item("\xA9nam", 1, "First") +
               key_item("\xA9nam", 1, "Second") + key_item("keyw", 1, "a, b")) +
        quicktime_key("com.apple.quicktime.software", "Software") +
        quicktime_key("com.apple.quicktime.creationdate", "2019-07-24") +
        box("udta", box("LOOP", big32(1)));
    const std::string file = movie_with(boxes);
    for (const auto& [switches, text] :
         {std::pair("-GetMovieTitle", "First"), std::pair("-GetMovieSoftware", "Software"),
          std::pair("-GetMovDescriptionStr", "Short"), std::pair("-GetMovieYear", "2019"),
          std::pair("-GetMovieKeywords", "a, b"), std::pair("-GetMovieComment", "-2026"),
          std::pair("-GetMovieLoopSetting", "1"), std::pair("-GetMovieLoopVariation", "1"),
          std::pair("-GetMovieTitle -GetMovieDuration", "2"),
          std::pair("-GetMovieTitle -Verbose", "Title [iTunes, \u00A9nam]: First")})
        EXPECT_EQ(answer(file, switches), text) << switches;
    EXPECT_EQ(answer(movie_with(""), "-GetMovieLoopSetting"), "0");
    EXPECT_EQ(answer(movie_with(""), "-GetMovieLoopVariation"), "-2026");
}

TEST(MovieItems, ComeAsXmlWithNothingLeftThatMeansSomethingThere) {
    const std::string boxes =
        itunes(box("----", full_box("mean", "a\"b") + full_box("name", "<&>") +
                               box("data", big32(1) + big32(0) + "1 < 2 & 3\1"))) +
        track({.more = box("udta", user_text("cmt", "caf\x8E", 0))});
    EXPECT_EQ(json_answer(movie_with(boxes), "-GetMovieMetadata"),
              R"({"MovieMetadata":[{"Name":"a\"b:<&>","Key":"a\"b:<&>","Source":"iTunes",)"
              R"("Value":"1 < 2 & 3\u0001"},{"Name":"Comment","Key":"©cmt","Source":"user data",)"
              R"("Track":2,"Language":"eng","Value":"{4}????"}]})");
    EXPECT_EQ(answer(movie_with(boxes), "-GetMovieMetadata -Format=XML"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<movie_metadata>\r"
              "<item name=\"a&quot;b:&lt;&amp;&gt;\" key=\"a&quot;b:&lt;&amp;&gt;\" "
              "source=\"iTunes\">1 &lt; 2 &amp; 3?</item>\r"
              "<item name=\"Comment\" key=\"\u00A9cmt\" source=\"user data\" track=\"2\" "
              "language=\"eng\">{4}caf\x8E</item>\r</movie_metadata>");
}

} // namespace
} // namespace vell::movies
