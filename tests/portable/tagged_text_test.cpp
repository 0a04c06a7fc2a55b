#include "src/metadata/writing/tagged_text.h"

#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace vell::metadata {
namespace {

// "E271=value" for each section.
std::string parsed(std::string_view text) {
    const auto sections = parse_tagged_text(text);
    if (!sections)
        return sections.error() == ErrorCode::BadParameter ? "refused" : "another error";
    std::string shown;
    for (const TaggedSection& section : *sections)
        shown += (shown.empty() ? "" : ";") +
                 std::string(1, "EGIPC"[static_cast<std::size_t>(section.kind)]) +
                 std::to_string(section.number) + "=" + std::string(section.value);
    return shown;
}

TEST(TaggedText, FindsSectionsWhateverTheLineEnds) {
    for (const auto& row : test::table("tagged_texts.txt", 2))
        EXPECT_EQ(parsed(row[0]), row[1]) << row[0];
}

TEST(TaggedText, TimeIsLinear) {
    std::string text;
    for (int i = 0; i < 300'000; ++i)
        text += "\r##EXIF 1\r##END 11\r##END 1";
    text += "\r##EXIF 2";
    for (int i = 0; i < 1'000'000; ++i)
        text += "\r##END 1";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(parsed(text), "refused");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
} // namespace vell::metadata
