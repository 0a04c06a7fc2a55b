// Reading the contents of files, over files in memory.
#include "src/files/contents/contents.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_files.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::files {
namespace {

using params::TextEncoding;
using testing::FakeCall;
using testing::FakeContents;
using testing::FakeFiles;
using testing::numbered_bytes;

std::string get(FakeFiles& files, std::vector<std::u16string> parameters) {
    FakeCall call(std::move(parameters));
    const std::string answer = answer_of(call, get_contents(call, files));
    EXPECT_EQ(files.open_files(), 0);
    return answer;
}

std::string get(std::string bytes, std::vector<std::u16string> parameters) {
    FakeFiles files;
    files.add(u"file", FakeContents::of(std::move(bytes)));
    return get(files, std::move(parameters));
}

TEST(GetContents, TheRangeCountsBytesFromZero) {
    struct {
        const char16_t* start;
        const char16_t* size;
        const char* expected;
    } const cases[] = {
        {u"3", u"0", "3456789"},
        {u"3", u"4", "3456"},
        {u"3", u"7", "3456789"},
        {u"3", u"8", "3456789"},
        {u"9", u"1", "9"},
        {u"", u"", "0123456789"},
        {u"10", u"0", "$$-39"},
        {u"2147483647", u"0", "$$-39"},
        {u"2147483648", u"0", "$$-4241"},
        {u"0", u"2147483648", "$$-4241"},
        {u"-1", u"0", "$$-4241"},
        {u"0", u"-1", "$$-4241"},
        {u"4294967298", u"1", "$$-4241"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(get("0123456789", {u"", u"file", c.start, c.size}), c.expected)
            << utf8_from_utf16(c.start) << ' ' << utf8_from_utf16(c.size);
    EXPECT_EQ(get("0123456789", {u"", u"file"}), "0123456789");
    EXPECT_EQ(get("0123456789", {u"", u"file", u"8"}), "89");
    EXPECT_EQ(get("", {u"-Encoding=UTF8", u"file", u"5", u"3"}), ""); // empty
    // No buffer is made for what the file does not have.
    FakeFiles files;
    files.add(u"file", FakeContents::of("0123456789"));
    EXPECT_EQ(get(files, {u"", u"file", u"7", u"2147483647"}), "789");
    EXPECT_EQ(files.longest_request(), 3U);
}

TEST(GetContents, ParametersAreCheckedBeforeAnyFileIsTouched) {
    FakeFiles files;
    files.add(u"C:/file", FakeContents::of("contents"));
    EXPECT_EQ(get(files, {u"-Encoding=UTF8"}), "$$-50");
    EXPECT_EQ(get(files, {u"", u"$$-43", u"-1"}), "$$-4299");
    EXPECT_EQ(get(files, {u"", u"no such file", u"-1"}), "$$-4241");
    EXPECT_EQ(files.operations(), 0);
    EXPECT_EQ(get(files, {u"", u"no such file"}), "$$-43");
    EXPECT_EQ(get(files, {u"", u"filewin:/C:/file"}), "contents");
}

// A device gives no length and no choice of place, and its pieces come as they come.
TEST(GetContents, ADeviceIsReadFromItsStartInPieces) {
    const std::string bytes = numbered_bytes(350'000);
    for (const std::size_t longest_read : {std::size_t{1'000}, std::size_t{7}, bytes.size()}) {
        FakeFiles files;
        files.add(u"device", FakeContents::device(bytes, longest_read));
        EXPECT_EQ(get(files, {u"", u"device"}), bytes);
        EXPECT_EQ(get(files, {u"", u"device", u"102399"}), bytes.substr(102'399));
        EXPECT_EQ(get(files, {u"", u"device", u"102401", u"204799"}),
                  bytes.substr(102'401, 204'799));
        EXPECT_EQ(files.end_of_reading(), 102'401U + 204'799U); // no byte more
        EXPECT_EQ(get(files, {u"", u"device", u"349999", u"9"}), bytes.substr(349'999));
        EXPECT_EQ(get(files, {u"", u"device", u"350000"}), "");
        EXPECT_EQ(files.longest_request(), 102'400U);
    }
}

TEST(GetContents, FilesBeyondFourGibibytesAreReadAtTheRightPlace) {
    constexpr std::uint64_t length = 5ULL << 30;
    FakeFiles files;
    files.add(u"large", {length, length,
                         [](std::uint64_t at) { return static_cast<char>('a' + at % 23); }, 50});
    constexpr std::uint64_t start = 2'147'483'647;
    std::string expected;
    for (std::uint64_t at = start; at < start + 40; ++at)
        expected += static_cast<char>('a' + at % 23);
    EXPECT_EQ(get(files, {u"", u"large", u"2147483647", u"40"}), expected);
    EXPECT_EQ(files.end_of_reading(), start + 40);
    EXPECT_EQ(files.longest_request(), 40U);
    // The rest is cut at what a buffer may hold; less may come.
    EXPECT_EQ(get(files, {u"", u"large", u"10"}),
              "klmnopqrstuvwabcdefghijklmnopqrstuvwabcdefghijklmn");
    EXPECT_EQ(files.longest_request(), 2'147'483'647U);
}

TEST(GetContents, AShortReadIsTheEndOfTheFile) {
    FakeFiles files;
    FakeContents shrunk = FakeContents::of("0123456789");
    shrunk.length = 6;
    files.add(u"shrunk", shrunk);
    EXPECT_EQ(get(files, {u"", u"shrunk", u"2"}), "2345");
    EXPECT_EQ(get(files, {u"", u"shrunk", u"8"}), "");
}

TEST(GetContents, TheEncodingOfTheSwitchesDecodes) {
    const auto encodings = [](const char16_t* switches) {
        FakeFiles files;
        files.add(u"file", FakeContents::of("a\xC3\xA9"));
        FakeCall call({switches, u"file"});
        EXPECT_TRUE(get_contents(call, files));
        return call.encodings();
    };
    using List = std::vector<TextEncoding>;
    EXPECT_EQ(encodings(u""), List{TextEncoding::Native});
    EXPECT_EQ(encodings(u"-Encoding=UTF-8"), List{TextEncoding::Utf8});
    EXPECT_EQ(encodings(u"-Encoding=BytesOnly -Encoding=UTF8"), List{TextEncoding::BytesOnly});
}

TEST(GetContents, WhatIsNotUtf8IsReadAsNativeBehindANote) {
    const std::string note = "<INVALID UTF8; trying native encoding>";
    const auto get_utf8 = [](std::string bytes) {
        return get(std::move(bytes), {u"-Encoding=UTF8", u"file"});
    };
    EXPECT_EQ(get_utf8("a\xC3\xA9\xF0\x9F\x98\x80"), "a\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(get_utf8("caf\xE9 au lait"), note + "caf\xC3\xA9 au lait");
    // A whole file begins and ends with whole characters.
    EXPECT_EQ(get_utf8("\xA9z"), note + "\xC2\xA9z");
    EXPECT_EQ(get_utf8("a\xC3"), note + "a\xC3\x83");
}

TEST(GetContents, ACharacterThatTheRangeCutsIsReplacedByANote) {
    const std::string note = "<INVALID UTF8>";
    const auto get_range = [](const char16_t* start, const char16_t* size) {
        // a 0, é 1-2, € 3-5, 😀 6-9, z 10
        return get("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z",
                   {u"-Encoding=UTF8", u"file", start, size});
    };
    EXPECT_EQ(get_range(u"0", u"2"), "a" + note);
    EXPECT_EQ(get_range(u"1", u"9"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(get_range(u"7", u"0"), note + "z");
    EXPECT_EQ(get_range(u"4", u"5"), note + note);
    // From a device, too, whatever may follow.
    FakeFiles files;
    files.add(u"device", FakeContents::device("a\xC3\xA9\xE2\x82\xACz", 2));
    EXPECT_EQ(get(files, {u"-Encoding=UTF8", u"device", u"2", u"3"}), note + note);
    // Within what is no UTF-8 at all, nothing is cut.
    EXPECT_EQ(get("\xC3\xA9\xFF\xE2\x82\xAC", {u"-Encoding=UTF8", u"file", u"1", u"3"}),
              "<INVALID UTF8; trying native encoding>\xC2\xA9\xC3\xBF\xC3\xA2");
}

TEST(GetContents, LineEndsAreConvertedOnRequest) {
    EXPECT_EQ(get("a\r\nb\nc\rd", {u"", u"file"}), "a\r\nb\nc\rd");
    EXPECT_EQ(get("a\r\nb\nc\rd", {u"-ConvertToFMPLinebreaks", u"file"}), "a\rb\r\nc\rd");
    EXPECT_EQ(get("a\r\nb\nc\rd", {u"-CRtoCRLF", u"file"}), "a\r\nb\nc\rd");
    EXPECT_EQ(get("\xE9\r\n", {u"-Encoding=UTF8 -convertToFMPlinebreaks", u"file"}),
              "<INVALID UTF8; trying native encoding>\xC3\xA9\r");
}

TEST(GetContents, EveryFailureOfTheFileIsReportedAndClosesIt) {
    constexpr auto code = static_cast<ErrorCode>(1117); // one of the system's own
    FakeFiles files;
    files.add(u"file", FakeContents::of("0123456789"));
    files.add(u"device", FakeContents::device(numbered_bytes(20), 3));
    const std::pair<const char16_t*, int> cases[] = {
        {u"file", 4},   // open, size, seek, read
        {u"device", 6}, // open, size, two pieces to skip, two to take
    };
    for (const auto& [path, operations] : cases) {
        for (int failing = 1; failing <= operations; ++failing) {
            files.fail(failing, code);
            EXPECT_EQ(get(files, {u"", path, u"4", u"6"}), "$$1117") << failing;
            EXPECT_EQ(files.operations(), failing);
        }
        files.fail(operations + 1, code);
        EXPECT_EQ(get(files, {u"", path, u"4", u"6"}).size(), 6U);
    }
}

} // namespace
} // namespace vell::files
