// Metadata written through the host: encodings, the script step, files that others have open.
#include "tests/portable/image_builder.h"
#include "tests/portable/tiff_builder.h"
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

using namespace vell::test;

class SetMetadata : public PluginWithFolder {
  protected:
    std::u16string set(const std::u16string& switches, const std::u16string& file,
                       const std::u16string& text) {
        return call(u"VlFile_SetMetaData", {switches, file, u"", text});
    }
    std::u16string get(const std::u16string& switches, const std::u16string& file) {
        return call(u"VlFile_GetMetaData", {switches, file});
    }

    const std::string frame = segment(SegmentMarker::Sof0, "frame") + "\xFF\xDAscan\xFF\xD9";
    const std::string plain = "\xFF\xD8" + frame;
};

TEST_F(SetMetadata, StoresTextsInTheEncodingsOfTheSwitches) {
    const struct {
        const char16_t* switches;
        const char16_t* text;
        const char* stored;
    } cases[] = {
        {u"JPEGComment", u"\u20AC", "\x80"},
        {u"JPEGComment", u"\u20AC\u65E5", "\xE2\x82\xAC\xE6\x97\xA5"},
        {u"JPEGComment -WinCharset", u"\u20AC\u65E5", "\x80?"},
        {u"JPEGComment -Encoding=ISO_8859_5", u"\u0416", "\xB6"},
    };
    for (const auto& c : cases) {
        const std::u16string file = folder.file(L"a.jpg", plain);
        ASSERT_EQ(set(c.switches, file, c.text), u"0");
        EXPECT_EQ(contents(L"a.jpg"), "\xFF\xD8" + segment(SegmentMarker::Com, c.stored) + frame);
    }
}

// Every byte of a native text comes back, zero bytes and undefined characters too.
TEST_F(SetMetadata, WhatTheHostReadItWritesBack) {
    std::string every_byte;
    for (int byte = 1; byte < 256; ++byte)
        every_byte += static_cast<char>(byte);
    const std::string exif = exif_segment(build_tiff(
        ByteOrder::Big, {.first = {ascii(270, every_byte), {282, FieldType::Rational, {1, 3}}},
                         .exif = {undefined(37510, std::string("\0\0x\0y", 5) + every_byte)},
                         .gps = {bytes(0, std::string("\2\2\0\0", 4))}}));
    const std::string iptc = photoshop(resource(0x0404, dataset(2, 0, std::string("\0\2", 2)) +
                                                            dataset(2, 120, every_byte + "x")));
    const std::string image = "\xFF\xD8" + exif + iptc + frame;
    const std::u16string file = folder.file(L"a.jpg", image);
    for (const auto& [reading, writing] :
         {std::pair{u"GetExif GetGPS", u"-SetExif"},
          {u"-GetRawExif", u"-SetExif"},
          {u"GetExif -SourceUTF8Charset", u"-SetExif -UTF8Charset"},
          {u"GetIPTC", u"-SetIPTC"}}) {
        EXPECT_EQ(set(writing, file, get(reading, file)), u"0");
        EXPECT_EQ(contents(L"a.jpg"), image) << to_wide(reading).size();
    }
}

TEST_F(SetMetadata, LeavesFilesAloneThatOthersHoldOrThatAreProtected) {
    const std::u16string file = folder.file(L"a.jpg", plain);
    {
        const UniqueFile open = open_file(file, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_EQ(set(u"-SetXMP", file, u"x"), u"$$-47");
    }
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(set(u"-SetXMP", file, u"x"), u"$$-47");
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(contents(L"a.jpg"), plain);
}

} // namespace
} // namespace vell::test
