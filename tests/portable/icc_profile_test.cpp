// Descriptions of ICC profiles that are made here, whole and damaged.
#include "src/metadata/icc/icc_profile.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/metadata_cases.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

namespace vell::metadata::icc_profile_test {
namespace {

using namespace vell::test;
using namespace std::string_literals;

std::string utf16(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text)
        bytes += big16(unit);
    return bytes;
}
std::string tag_data(std::string_view type, const std::string& rest) {
    return std::string(type) + big32(0) + rest;
}

std::string version2_name(const std::string& ascii, std::u16string_view unicode = u"",
                          std::uint16_t script = 0, const std::string& script_text = "") {
    std::string mac(1, static_cast<char>(script_text.size()));
    mac += script_text;
    mac.resize(68);
    return tag_data("desc", big_size(ascii.size() + 1) + ascii + '\0' + big32(0) +
                                big_size(unicode.size()) + utf16(unicode) + big16(script) + mac);
}

// By language.
std::string localized(const std::vector<std::pair<std::string, std::u16string>>& texts) {
    std::string records = big_size(texts.size()) + big32(12), strings;
    for (const auto& [language, text] : texts) {
        const std::string encoded = utf16(text);
        records +=
            language + big_size(encoded.size()) + big_size(16 + 12 * texts.size() + strings.size());
        strings += encoded;
    }
    return tag_data("mluc", records + strings);
}

// The data of tags by their signatures.
std::string profile_of(const std::vector<std::pair<std::string, std::string>>& tags) {
    const std::string header_rest =
        "Lino" + big32(0x02'10'00'00) + "mntrRGB XYZ " + big16(1998) + big16(2) + big16(9) +
        big16(6) + big16(49) + big16(0) + "acspMSFT" + big32(1) + "IEC " + std::string("\1\2\3\4") +
        big32(0) + big32(0b0101) + big32(1) + big32(0xF6D6) + big32(0x10000) + big32(0xD32D) +
        "HP<&" + std::string("\xAB") + std::string(15 + 28, '\0');
    std::string table = big_size(tags.size()), data;
    for (const auto& [signature, contents] : tags) {
        table +=
            signature + big_size(132 + 12 * tags.size() + data.size()) + big_size(contents.size());
        data += contents;
    }
    return big_size(132 + table.size() - 4 + data.size()) + header_rest + table + data;
}

// What the switches ask of a profile, behind what has been read before.
std::string description(std::string_view profile, std::string_view switches,
                        std::string_view before = {}) {
    MetadataText text;
    text.append(before);
    const auto request = metadata_request_of(params::SwitchSet(switches));
    const Result<void> done = describe_icc_profile(profile, *request, text);
    return shown(text, done);
}
constexpr const char* name = "-GetIccProfileName";
constexpr const char* all_names = "-GetLocalizedIccProfileName";
constexpr const char* plain = "-GetIccProfileDescription";
constexpr const char* verbose = "-GetIccProfileDescription -VerboseLevel=2";

const std::string some_profile = profile_of(
    {{"desc", version2_name("a<b\1", u"ä")},
     {"wtpt", tag_data("XYZ ", big32(0x8000) + big32(0xFFFF'0000) + big32(0) + "cut off")},
     {"rTRC", tag_data("curv", big32(1) + big16(0x0233) + big16(0))},
     {"gTRC", tag_data("curv", big32(1024))},
     {"tech", tag_data("sig ", "CRT ")},
     {"calt", tag_data("dtim", big16(2001) + big16(1) + big16(2) + big16(3) + big16(4) + big16(5))},
     {"cprt", tag_data("text", std::string("(c)\0left over", 13))}});

TEST(IccProfile, DescribesHeaderAndTags) {
    const std::string header =
        "Profile size: 421|CMM: Lino|Version: 2.1.0|Class: mntr (display device)|Colour space: RGB|"
        "Connection space: XYZ|Date: 1998-02-09 06:49:00|Signature: acsp|Platform: MSFT "
        "(Microsoft)|"
        "Flags: 1 (embedded, usable on its own)|Manufacturer: IEC|Model: 0x01020304|"
        "Attributes: 5 (transparency, glossy, negative, colour)|"
        "Intent: 1 (media-relative colorimetric)|Illuminant: 0.964203 1 0.824905|Creator: HP<&|"
        "Profile ID: ab000000000000000000000000000000|";
    const std::string names = "Description: a<b\1|Description (Unicode): \xC3\xA4|Tags: 7|";
    EXPECT_EQ(description(some_profile, plain, "##END 1"),
              "##END 1|" + header + names +
                  "Tag desc: desc, 97 bytes|Tag wtpt: XYZ, 27 bytes|Tag rTRC: curv, 16 bytes|"
                  "Tag gTRC: curv, 12 bytes|Tag tech: sig, 12 bytes|Tag calt: dtim, 20 bytes|"
                  "Tag cprt: text, 21 bytes");
    EXPECT_EQ(description(some_profile, verbose + " -GetFirstLanguage"s, "ICC chunk count: 1\r"),
              "ICC chunk count: 1|" + header +
                  "Description: a<b\1|Tags: 7|"
                  "Tag desc: desc, 97 bytes at 216|  Text: a<b\1|"
                  "Tag wtpt: XYZ, 27 bytes at 313|  XYZ: 0.5 -1 0|"
                  "Tag rTRC: curv, 16 bytes at 340|  Curve: gamma 2.19922|"
                  "Tag gTRC: curv, 12 bytes at 356|  Curve: 1024 entries|"
                  "Tag tech: sig, 12 bytes at 368|  Signature: CRT|"
                  "Tag calt: dtim, 20 bytes at 380|  Date: 2001-01-02 03:04:05|"
                  "Tag cprt: text, 21 bytes at 400|  Text: (c)");
}

TEST(IccProfile, DescribesAsXml) {
    const std::string xml = description(some_profile, plain + " -Format=XML"s);
    for (const std::string_view part :
         {"<?xml version=\"1.0\" "
          "encoding=\"UTF-8\"?>|<icc_profile>|<profile_size>421</profile_size>|",
          "|<class meaning=\"display device\">mntr</class>|", "|<creator>HP&lt;&amp;</creator>|",
          "|<description>a&lt;b?</description>|<description language=\"Unicode\">ä</description>|"
          "<tags>7</tags>|<tag signature=\"desc\" type=\"desc\" size=\"97\"></tag>|"})
        EXPECT_TRUE(xml.contains(part)) << part << " in " << xml;
    EXPECT_TRUE(xml.ends_with("size=\"21\"></tag>|</icc_profile>"));
    EXPECT_TRUE(description(some_profile, verbose + " -Format=XML"s)
                    .contains("|<tag signature=\"wtpt\" type=\"XYZ\" size=\"27\" offset=\"313\">|"
                              "<xyz>0.5 -1 0</xyz></tag>|"));
}

TEST(IccProfile, NamesInTheirLanguages) {
    const std::string version4 = profile_of(
        {{"desc",
          localized({{std::string("de\0\0", 4), u""}, {"deDE", u"Größe"}, {"enUS", u"Size"}})}});
    EXPECT_EQ(description(version4, name), "Größe");
    EXPECT_EQ(description(version4, all_names + " -GetFirstLanguage"s), "Größe");
    EXPECT_EQ(description(version4, all_names, "##END 1"), "##END 1|de-DE: Größe|en-US: Size");

    const std::string version2 =
        profile_of({{"desc", version2_name("Screen", u"Schirm", 7, "\xDD")},
                    {"dscm", localized({{"frFR", u"Écran"}})}});
    EXPECT_EQ(description(version2, name), "Screen");
    EXPECT_EQ(description(version2, all_names),
              "Screen|Unicode: Schirm|ScriptCode: <15:\xDD>|fr-FR: Écran");
    EXPECT_EQ(description(profile_of({{"desc", version2_name("", u"Schirm")}}), name), "Schirm");
    EXPECT_EQ(description(profile_of({{"desc", version2_name("")}}), name), "!-2026");
    EXPECT_EQ(description(profile_of({{"cprt", version2_name("a")}}), all_names), "!-2026");
    EXPECT_EQ(description(profile_of({{"desc", "none"}}), name), "!-4249");
}

TEST(IccProfile, GivesWhatCanBeReadOfDamagedProfiles) {
    EXPECT_EQ(description(some_profile.substr(0, 127), verbose), "!-302");
    EXPECT_TRUE(description(some_profile.substr(0, 128), verbose).ends_with("|Tags: 0"));
    std::string damaged = some_profile;
    damaged[36] = 'x';
    EXPECT_EQ(description(damaged, verbose), "!-4249");

    damaged = some_profile.substr(0, 160);
    damaged.replace(128, 4, big32(0xFFFF'FFFF));
    EXPECT_TRUE(description(damaged, verbose)
                    .ends_with("|Tags: 4294967295 (not all of them there)|"
                               "Tag desc: (outside the profile), 97 bytes at 216|"
                               "Tag wtpt: (outside the profile), 27 bytes at 313"));
    EXPECT_EQ(description(damaged, name), "!-4249");
    EXPECT_EQ(description(damaged.substr(0, 140), name), "!-302"); // no whole entry

    // Lengths and counts of four billion.
    damaged = some_profile;
    damaged.replace(216 + 8, 4, big32(0xFFFF'FFFF));
    EXPECT_TRUE(description(damaged, name).starts_with("a<b\1"));
    std::string texts = localized({{"enUS", u"A"}, {"deDE", u"B"}});
    texts.replace(8, 4, big32(0xFFFF'FFFF));
    EXPECT_EQ(description(profile_of({{"desc", texts}}), all_names), "en-US: A|de-DE: B");
    texts.replace(16 + 12 + 4, 4, big32(0xFFFF'FFFF));
    EXPECT_EQ(description(profile_of({{"desc", texts}}), all_names), "en-US: A");
    texts.replace(12, 4, big32(0));
    EXPECT_EQ(description(profile_of({{"desc", texts}}), name), "!-4249");
}

// Many tags over the same text: the description grows with the profile, not with its square.
TEST(IccProfile, IsDescribedInBoundedSpace) {
    constexpr std::uint32_t count = 20'000;
    std::string profile = profile_of({}).substr(0, 128) + big32(count);
    for (std::uint32_t i = 0; i < count; ++i)
        profile += "cprt" + big32(132 + 12 * count) + big32(500'000);
    profile += tag_data("text", std::string(499'992, 'x'));
    EXPECT_LT(description(profile, verbose).size(), 10 * profile.size());
}

TEST(IccProfile, StandsInATagOfTiffFiles) {
    const auto tiff = [](const TiffField& profile) {
        return tags_of({ascii(271, "A"), profile}, ByteOrder::Big);
    };
    const std::string file = tiff(undefined(34675, some_profile));
    expect_metadata({
        {plain, file, description(some_profile, plain)},
        {name, file, "a<b\1"},
        {all_names, file, description(some_profile, all_names)},
        {"-GetIccProfileName GetExif", file, tagged("EXIF 271=A") + "|a<b\1"},
        {name, tiff(undefined(34675, "cut")), "!-302"},
    });
}

} // namespace
} // namespace vell::metadata::icc_profile_test
