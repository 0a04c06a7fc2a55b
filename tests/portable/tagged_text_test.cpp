#include "src/metadata/writing/tagged_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace vell::metadata {
namespace {

// "E271=value" for each section; "error" for a text that is refused.
std::string parsed(std::string_view text) {
    const auto sections = parse_tagged_text(text);
    if (!sections)
        return sections.error() == ErrorCode::BadParameter ? "error" : "another error";
    std::string shown;
    for (const TaggedSection& section : *sections)
        shown += (shown.empty() ? "" : "|") +
                 std::string(1, "EGIPC"[static_cast<std::size_t>(section.kind)]) +
                 std::to_string(section.number) + "=" + std::string(section.value);
    return shown;
}

TEST(TaggedText, FindsSectionsWhateverTheLineEnds) {
    const struct {
        std::string text;
        const char* expected;
    } cases[] = {
        {" \r\n", ""},
        {"\r##EXIF 271\rA\r##END 271\r##GPS 0\r2.2.0.0\r##END 0\r##INTEROP 1\rR98\r##END 1",
         "E271=A|G0=2.2.0.0|I1=R98"},
        {"##IPTC 25\r\nfirst\r\n##END 25\r\n##IPTC 25\r\nsecond\r\n##END 25\r\n",
         "P25=first|P25=second"},
        {"\r##JCOM\rA comment\r##END ", "C0=A comment"},
        {"\r##JCOM\r##END 5\r##END", "C0=##END 5"},
        // Values with line ends of their own, and with what is the end of another section.
        {"\r##GPS 2\r1\r2\r3\r##END 2", "G2=1\r2\r3"},
        {"\r##EXIF 270\r\nabc\r\r##END 270", "E270=\nabc\r"},
        {"\r##EXIF 270\r##END 2701\r##EXIF 9\rx##END 270\r##END 270",
         "E270=##END 2701\r##EXIF 9\rx##END 270"},
        // Empty ones.
        {"\r##EXIF 270\r\r##END 270", "E270="},
        {"##EXIF 270\r##END 270", "E270="},
        {"##EXIF 270\r\n\r\n##END 270", "E270="},
        {"##EXIF 270\r\n##END 270", "E270="},
        // What stands between the datasets of several blocks.
        {"\r##IPTC 5\ra\r##END 5\r\r--- NEXT_IPTC_APP_RECORD ---\r##IPTC 5\rb\r##END 5"
         "\r\rWARNING: MULTIPLE_IPTC_APP_RECORDS_FOUND\r",
         "P5=a|P5=b"},
        {std::string("\r##IPTC 0\r\2\0\r##END 0", 20), "P0=\2"},
        {"##EXIF 65535\r1\r##END 65535", "E65535=1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(parsed(c.text).c_str()), c.expected) << c.text;
}

TEST(TaggedText, RefusesWhatIsNoSection) {
    for (const char* text :
         {"x", "#EXIF 271\rA\r##END 271", "##EXIF\rA\r##END ", "##EXIF 271", "##EXIF 271\rA",
          "##EXIF 271\rA\r##END 272", "##EXIF 271\rA##END 271", "##EXIF 271 A\r##END 271",
          "##EXIF 65536\rA\r##END 65536", "##EXIF -1\rA\r##END -1", "##IPTC 256\rA\r##END 256",
          "##EXIF 271\rA\r##END 271x", "##FOO 1\rA\r##END 1", "##EXIF 271\rA\r##END 271\rmore",
          "##JCOM A\r##END "})
        EXPECT_EQ(parsed(text), "error") << text;
}

TEST(TaggedText, TimeIsLinear) {
    std::string text;
    for (int i = 0; i < 300'000; ++i)
        text += "\r##EXIF 1\r##END 11\r##END 1";
    text += "\r##EXIF 2";
    for (int i = 0; i < 1'000'000; ++i)
        text += "\r##END 1";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(parsed(text), "error");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
} // namespace vell::metadata
