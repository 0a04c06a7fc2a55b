// Reading the contents of files, over files in memory.
#include "src/files/contents/contents.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::files {
namespace {

using params::TextEncoding;
using test::FakeCall;
using test::FakeItem;
using test::FakeSystem;

// Bytes whose place can be told from a few of them.
std::string numbered_bytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>('a' + i * i % 23);
    return bytes;
}

std::string get(FakeSystem& files, std::vector<std::u16string> parameters) {
    const std::string answer = answer_of(get_contents, files, std::move(parameters));
    EXPECT_EQ(files.open_files(), 0);
    return answer;
}

std::string get(std::string bytes, std::vector<std::u16string> parameters) {
    FakeSystem files;
    files.add(u"file", std::move(bytes));
    return get(files, std::move(parameters));
}

TEST(GetContents, TheRangeCountsBytesFromZero) {
    for (const auto& row : test::wide_table("ranges.txt", 3))
        EXPECT_EQ(get("0123456789", {u"", u"file", row[0], row[1]}), utf8_from_utf16(row[2]))
            << utf8_from_utf16(row[0] + u' ' + row[1]);
    // No buffer is made for what the file does not have.
    FakeSystem files;
    files.add(u"file", "0123456789");
    EXPECT_EQ(get(files, {u"", u"file", u"7", u"2147483647"}), "789");
    EXPECT_EQ(files.longest_request(), 3U);
}

// A device gives no length and no choice of place, and its pieces come as they come.
TEST(GetContents, ADeviceIsReadFromItsStartInPieces) {
    const std::string bytes = numbered_bytes(350'000);
    for (const std::size_t longest_read : {std::size_t{1'000}, std::size_t{7}, bytes.size()}) {
        FakeSystem files;
        files.add(u"device", FakeItem::device(bytes, longest_read));
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
    FakeSystem files;
    files.add(u"large",
              FakeItem{.length = length,
                       .byte_at = [](std::uint64_t at) { return static_cast<char>('a' + at % 23); },
                       .longest_read = 50});
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
    FakeSystem files;
    files.add(u"shrunk", FakeItem{.bytes = "012345", .reported_length = 10});
    EXPECT_EQ(get(files, {u"", u"shrunk", u"2"}), "2345");
    EXPECT_EQ(get(files, {u"", u"shrunk", u"8"}), "");
}

TEST(GetContents, TheEncodingOfTheSwitchesDecodes) {
    const auto encodings = [](const char16_t* switches) {
        FakeSystem files;
        files.add(u"file", "a\xC3\xA9");
        FakeCall call({switches, u"file"});
        EXPECT_TRUE(get_contents(call, files));
        return call.encodings();
    };
    using List = std::vector<TextEncoding>;
    EXPECT_EQ(encodings(u""), List{TextEncoding::Native});
    EXPECT_EQ(encodings(u"-Encoding=UTF-8"), List{TextEncoding::Utf8});
    EXPECT_EQ(encodings(u"-Encoding=BytesOnly -Encoding=UTF8"), List{TextEncoding::BytesOnly});
}

TEST(GetContents, ACharacterThatTheRangeCutsOfADeviceIsReplacedByANote) {
    FakeSystem files;
    files.add(u"device", FakeItem::device("a\xC3\xA9\xE2\x82\xACz", 2));
    EXPECT_EQ(get(files, {u"-Encoding=UTF8", u"device", u"2", u"3"}),
              "<INVALID UTF8><INVALID UTF8>");
}

TEST(GetContents, EveryFailureOfTheFileIsReportedAndClosesIt) {
    constexpr auto code = static_cast<ErrorCode>(1117); // one of the system's own
    FakeSystem files;
    files.add(u"file", "0123456789");
    files.add(u"device", FakeItem::device(numbered_bytes(20), 3));
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
