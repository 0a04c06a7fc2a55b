// Texts converted for and from files, characters by number, references as paths, classic types.
#include "src/files/contents/character_codes.h"
#include "src/files/contents/text_conversion.h"
#include "src/files/information/mac_properties.h"
#include "src/files/paths/path_references.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_files.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <tuple>

namespace vell::files {
namespace {

using params::Call;
using testing::answer_of;
using testing::in_no_system;

TEST(TextConversion, LineEndsAndBytesGoBothWays) {
    constexpr std::tuple<const char16_t*, const char16_t*, const char*, const char*> cases[] = {
        {u"", u"a\rb\r\nc\nd\r\re", "a\r\nb\r\nc\r\nd\r\n\r\ne", "a\rb\rc\rd\r\re"},
        {u"-CRtoCRLF", u"a\rb\nc", "a\r\nb\nc", "a\r\nb\nc"},
        {u"-CRLFtoCR", u"a\r\nb\nc", "a\rb\nc", "a\rb\nc"},
        {u"-Encoding=none such", u"\u20AC\r", "\u20AC\r\n", "\u20AC\r"},
        {u"-Encoding=UTF8", u"\u00C3\u00A9\n", "\u00C3\u0083\u00C2\u00A9\r\n", "\u00E9\r"},
        {u"-encoding=utf-8", u"\u00E9", "\u00C3\u00A9",
         "<INVALID UTF8; trying native encoding>\u00E9"},
        {u"-Encoding=UTF8", u"\u20AC", "\u00E2\u0082\u00AC", "$$-4297"},
        {u"-Encoding=BytesOnly", u"\u20AC", "$$-4297", "$$-4297"},
        {u"-Encoding=BytesOnly", u"\u0080\u00FF", "\u0080\u00FF", "\u0080\u00FF"},
    };
    for (const auto& [switches, text, from_host, to_host] : cases) {
        EXPECT_EQ(answer_of({switches, text}, in_no_system(convert_from_host_text)), from_host);
        EXPECT_EQ(answer_of({switches, text}, in_no_system(convert_to_host_text)), to_host);
    }
}

TEST(CharacterCodes, AreCodePointsOrBytesOfTheEncoding) {
    constexpr std::tuple<const char16_t*, const char16_t*, const char16_t*, const char*> cases[] = {
        {u"", u"x-65.066y", u"--", "A--B"},
        {u"", u"8364 128512 55295 57344 1114111", u"", "\u20AC\U0001F600\uD7FF\uE000\U0010FFFF"},
        {u"", u"65 0", u"", "$$-4241"},
        {u"", u"57343", u"", "$$-4241"},
        {u"", u"1114112", u"", "$$-4241"},
        {u"", u"18446744073709551681", u"", "$$-4241"}, // 65 in 64 bits
        {u"-Encoding=ISO_8859_1", u"233 255", u"-", "\u00E9-\u00FF"},
        {u"-Encoding=ISO_8859_1", u"256", u"", "$$-4241"},
        {u"-Encoding=UTF8", u"195 169 65", u"", "\u00E9A"},
        {u"-Encoding=UTF8", u"50089 14844588 4036991104 65", u"\u20AC",
         "\u00E9\u20AC\u20AC\u20AC\U0001F600\u20ACA"},
        {u"-Encoding=UTF8", u"195 169", u"-", "$$-4280"},
        {u"-Encoding=UTF8", u"4294967296", u"", "$$-4241"},
        {u"-Encoding=UTF8", u"", u"-", ""},
        {u"-Encoding=ShiftJIS_Win", u"33440", u"-", "\u0082\u00A0"},
    };
    std::u16string many;
    for (int i = 0; i < 257; ++i)
        many += u"65 ";
    EXPECT_EQ(
        answer_of({u"", many, std::u16string(1 << 20, u'-')}, in_no_system(ascii_value_to_text)),
        "$$-207");
    for (const auto& [switches, values, separator, expected] : cases)
        EXPECT_EQ(answer_of({switches, values, separator}, in_no_system(ascii_value_to_text)),
                  expected)
            << utf8_from_utf16(values);
}

class FromHere : public testing::FakeSystem {
  public:
    Result<std::u16string> absolute_path(const std::u16string& given) override {
        std::u16string path = given;
        std::ranges::replace(path, u'/', u'\\');
        const bool has_root = path.starts_with(u"\\\\") || path.substr(0, 2) == u"C:";
        return has_root ? path : u"C:\\here\\" + path;
    }
};

TEST(References, NameOneFullPath) {
    FromHere system;
    constexpr std::pair<const char16_t*, const char*> cases[] = {
        {u"C:/a/", "C:\\a\\"},
        {u"filewin:/C:/a b", "C:\\a b"},
        {u"filewin:C:/a", "C:\\a"},
        {u"moviewin://server/share/a", "\\\\server\\share\\a"},
        {u"file:a/b", "C:\\here\\a\\b"},
        {u"image:/C:/a", "C:\\a"},
        {u"smb://user:p@ss@server/share/a@b", "\\\\server\\share\\a@b"},
        // What containers say.
        {u"size:20,30\rimage:../a.jpg\rimagewin:/C:/a.jpg\rimagemac:/Disk/a.jpg", "C:\\a.jpg"},
        {u"file:/C:/a\rfilewin:/C:/a\r", "C:\\a"},
        {u"movie:a.mov\rmoviewin://server/share/a.mov", "\\\\server\\share\\a.mov"},
        {u"C:\\a\rC:\\b", "$$-4254"},
        {u"size:1,2\rimage:a.jpg\rimagemac:/Disk/a.jpg", "$$-50"},
        {u"", "$$-50"},
        {u"smb://", "$$-50"},
        {u"filemac:/Disk/a", "$$-4221"},
        {u"filewin:/$$-43", "$$-4299"},
    };
    const auto to_path = [&](Call& call) {
        return file_spec_to_full_path(call, system);
    };
    for (const auto& [reference, expected] : cases)
        EXPECT_EQ(answer_of({u"", reference}, to_path), expected) << utf8_from_utf16(reference);
    EXPECT_EQ(answer_of({u"-FileMakerPathFormat", u"a/b"}, to_path), "filewin:/C:/here/a/b");
    const auto to_reference = [&](Call& call) {
        return full_path_to_file_spec(call, system);
    };
    EXPECT_EQ(answer_of({u"", u"smb://server/share"}, to_reference), "file://server/share");
}

TEST(MacProperties, AreToldByTheNameOrNotAtAll) {
    testing::FakeFiles files;
    for (const char16_t* path : {u"a.txt", u"b\\A.JPEG", u"a.unknown", u"pdf"})
        files.add(path, {});
    files.add_folder(u"a.pdf\\");
    const auto type = [&](Call& call) {
        return get_file_type(call, files);
    };
    constexpr std::pair<const char16_t*, const char*> cases[] = {
        {u"a.txt", "TEXT"}, {u"b\\A.JPEG", "JPEG"}, {u"a.pdf\\", "fold"}, {u"a.unknown", ""},
        {u"pdf", ""},       {u"none.txt", "$$-43"}, {u"", "$$-50"}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(answer_of({u"", path}, type), expected) << utf8_from_utf16(path);
    EXPECT_EQ(answer_of({u"", u"", u"comment"}, in_no_system(set_finder_comment)), "$$-50");
}

} // namespace
} // namespace vell::files
