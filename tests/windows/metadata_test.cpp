// Image metadata through the host: texts in their encodings, styles, codes.
#include "src/host/bridge/host_data.h"
#include "src/host/bridge/styled_text.h"
#include "src/host/entry/dispatcher.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

using namespace vell::test;

class Metadata : public PluginWithFolder {
  protected:
    std::u16string ask(const std::u16string& switches, const std::string& contents) {
        return call(u"VlFile_GetMetaData", {switches, folder.file(L"image.jpg", contents)});
    }
};

TEST_F(Metadata, ReadsTextsInTheirEncodings) {
    const std::string image =
        jpeg({exif_segment(build_tiff(ByteOrder::Little, {.first = {ascii(271, "A\xE4")}})),
              segment(SegmentMarker::Com, "\xE2\x82\xAC\x80"),
              photoshop(resource(0x0404, dataset(1, 90, "\x1B%G") + dataset(2, 5, "\xE2\x82\xAC") +
                                             dataset(2, 25, "\x80")))});
    EXPECT_EQ(ask(u"GetExif", image), u"\r##EXIF 271\rA\u00E4\r##END 271");
    EXPECT_EQ(ask(u"GetExif SourceMacCharset", image), u"\r##EXIF 271\rA\u2030\r##END 271");
    EXPECT_EQ(ask(u"GetJPEGComment", image), u"\r##JCOM\r\u00E2\u201A\u00AC\u20AC\r##END ");
    // The datasets declare UTF-8; what is none is native.
    EXPECT_EQ(ask(u"GetIPTC SourceMacCharset", image),
              u"\r##IPTC 5\r\u20AC\r##END 5\r##IPTC 25\r\u20AC\r##END 25");
}

TEST_F(Metadata, MarksRepeatedRecordsByStyle) {
    const std::string block = resource(0x0404, dataset(2, 5, "T"));
    const std::vector<Value> arguments{u"GetIPTC -ParseAllApplicationRecords",
                                       folder.file(L"a.psd", block + block)};
    const auto result = host().call_body(4260, host::dispatch, arguments);
    ASSERT_TRUE(result);
    fm::Status status;
    const fm::Text* text = host::text_of(result->get());
    fm::CharacterStyle* style = FM_CharacterStyle_Constructor1(&status);
    std::string faces; // one letter a character
    const std::uint32_t size = host::host_call(FM_Text_GetSize, text);
    for (std::uint32_t i = 0; i < size; ++i) {
        FM_Text_GetStyle(text, style, i, &status);
        faces += FM_CharacterStyle_GetFace(style, &status) == fm::face_bold ? 'b' : '.';
    }
    FM_CharacterStyle_Delete(style, &status);
    const std::string datasets(std::string_view("\r##IPTC 5\rT\r##END 5").size(), '.');
    const std::string next(std::string_view("\r\r--- NEXT_IPTC_APP_RECORD ---").size(), 'b');
    const std::string warning(
        std::string_view("\r\rWARNING: MULTIPLE_IPTC_APP_RECORDS_FOUND\r").size(), 'b');
    EXPECT_EQ(faces, datasets + next + datasets + warning);
}

} // namespace
} // namespace vell::test
