// Texts converted for and from files, characters by number, references as paths, classic types.
#include "src/files/contents/character_codes.h"
#include "src/files/contents/text_conversion.h"
#include "src/files/information/mac_properties.h"
#include "src/files/paths/path_references.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using params::Call;
using test::answer_of;
using test::in_no_system;

TEST(TextConversion, LineEndsAndBytesGoBothWays) {
    for (const auto& row : test::wide_table("text_conversions.txt", 4)) {
        const std::vector<std::u16string> parameters{row[0], row[1]};
        EXPECT_EQ(answer_of(parameters, in_no_system(convert_from_host_text)),
                  utf8_from_utf16(row[2]));
        EXPECT_EQ(answer_of(parameters, in_no_system(convert_to_host_text)),
                  utf8_from_utf16(row[3]));
    }
}

TEST(CharacterCodes, AreCodePointsOrBytesOfTheEncoding) {
    for (const auto& row : test::wide_table("character_codes.txt", 4))
        EXPECT_EQ(answer_of({row[0], row[1], row[2]}, in_no_system(ascii_value_to_text)),
                  utf8_from_utf16(row[3]))
            << utf8_from_utf16(row[1]);
    std::u16string many;
    for (int i = 0; i < 257; ++i)
        many += u"65 ";
    EXPECT_EQ(
        answer_of({u"", many, std::u16string(1 << 20, u'-')}, in_no_system(ascii_value_to_text)),
        "$$-207");
    EXPECT_EQ(answer_of({u"", u"55295 57344", u""}, in_no_system(ascii_value_to_text)),
              "\uD7FF\uE000"); // beside the surrogates
}

class FromHere : public test::FakeSystem {
  public:
    Result<std::u16string> absolute_path(const std::u16string& given) override {
        const std::u16string path = *FakeSystem::absolute_path(given);
        const bool has_root = path.starts_with(u"\\\\") || path.substr(0, 2) == u"C:";
        return has_root ? path : u"C:\\here\\" + path;
    }
};

TEST(References, NameOneFullPath) {
    FromHere system;
    const auto to_path = [&](Call& call) {
        return file_spec_to_full_path(call, system);
    };
    for (const auto& row : test::wide_table("references.txt", 2))
        EXPECT_EQ(answer_of({u"", row[0]}, to_path), utf8_from_utf16(row[1]))
            << utf8_from_utf16(row[0]);
    EXPECT_EQ(answer_of({u"-FileMakerPathFormat", u"a/b"}, to_path), "filewin:/C:/here/a/b");
    const auto to_reference = [&](Call& call) {
        return full_path_to_file_spec(call, system);
    };
    EXPECT_EQ(answer_of({u"", u"smb://server/share"}, to_reference), "file://server/share");
}

TEST(MacProperties, OfNoFileCannotBeSet) {
    EXPECT_EQ(answer_of({u"", u"", u"comment"}, in_no_system(set_finder_comment)), "$$-50");
}

} // namespace
} // namespace vell::files
