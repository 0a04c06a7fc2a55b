// Metadata as values: JSON, single values, and texts that a person reads.
#include "src/metadata/get_metadata.h"
#include "src/metadata/values/character_code.h"
#include "src/metadata/values/dates.h"
#include "src/metadata/values/tag_names.h"
#include "src/metadata/values/tag_set.h"
#include "src/metadata/values/xmp_model.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/strict_json.h"
#include "tests/portable/tiff_builder.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vell::metadata {
namespace {

using namespace vell::test;
using enum FieldType;

// The result of a call, or its code.
std::string answer(const std::string& switches, const std::string& file) {
    FakeSystem system;
    system.add(u"f", file);
    FakeCall call({utf16_from_utf8(switches), u"f"});
    const Result<void> done = get_metadata(call, system);
    return done ? utf8_from_utf16(*call.result()) : std::to_string(number(done.error()));
}

std::string with_tags(const TiffDirectories& directories, ByteOrder order = ByteOrder::Big) {
    return jpeg({exif_segment(build_tiff(order, directories))});
}

std::string with_packet(const std::string& packet) {
    return jpeg(
        {segment(SegmentMarker::App1, std::string("http://ns.adobe.com/xap/1.0/\0", 29) + packet)});
}

// A packet of properties in the usual namespaces.
std::string rdf(const std::string& properties, const std::string& attributes = "") {
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
           "rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
           "xmlns:xap=\"http://ns.adobe.com/xap/1.0/\" xmlns:own=\"urn:own\" "
           "xmlns:stRef=\"http://ns.adobe.com/xap/1.0/sType/ResourceRef#\" " +
           attributes + ">" + properties +
           "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";
}

std::string xmp_json(const std::string& packet) {
    JsonWriter json;
    Value(xmp_members(XmpModel::read(packet))).write(json);
    return json.take();
}

std::string utf16(std::u16string_view text, ByteOrder order) {
    std::string bytes;
    for (const char16_t unit : text)
        append_integer<std::uint16_t>(bytes, unit, order);
    return bytes;
}

TEST(TagNames, AreThoseOfTheStandards) {
    const std::pair<std::uint16_t, const char*> general[] = {
        {306, "DateTime"},
        {36881, "OffsetTimeOriginal"},
        {42082, "SourceExposureTimesOfCompositeImage"},
        {42039, "Photographer"},
        {50708, "UniqueCameraModel"},
        {0xC4A5, "Tag0xC4A5"},
    };
    for (const auto& [tag, name] : general) {
        EXPECT_EQ(name_of(TagFamily::General, tag), name);
        EXPECT_EQ(tag_of(TagFamily::General, name).value_or(0), tag == 0xC4A5 ? 0 : tag);
    }
    EXPECT_EQ(name_of(TagFamily::Gps, 31), "GPSHPositioningError");
    EXPECT_EQ(tag_of(TagFamily::Gps, "gpslatitude"), 2);
    EXPECT_FALSE(tag_of(TagFamily::Gps, "DateTime"));
}

TEST(Dates, AreGivenAsIso8601HasThem) {
    const struct {
        const char *text, *fraction, *offset, *expected;
    } exif[] = {
        {"2024:05:06 07:08:09", "12", "+02:00", "2024-05-06T07:08:09.12+02:00"},
        {"2024:05:06 07:08:09", "", "", "2024-05-06T07:08:09"},
        {"2024:05:06 07:08:09", " 5 ", "Z", "2024-05-06T07:08:09.5Z"},
        {"2024:05:06 07:08:09", "x", "+2:00", "2024-05-06T07:08:09"},
        {"2024-05-06T07:08:09 ", "", "-11:30", "2024-05-06T07:08:09-11:30"},
        {"2024:05:06", "", "+02:00", "2024-05-06"},
        {"0000:00:00 00:00:00", "", "", "-"},
        {"2024:13:06 07:08:09", "", "", "-"},
        {"2024:05:06 25:08:09", "", "", "-"},
        {"2024:05:06 07:08", "", "", "-"},
        {"    :  :     :  :  ", "", "", "-"},
        {"", "", "", "-"},
    };
    for (const auto& each : exif)
        EXPECT_EQ(exif_date(each.text, each.fraction, each.offset).value_or("-"), each.expected);
    EXPECT_EQ(iptc_date("20240506"), "2024-05-06");
    EXPECT_EQ(iptc_date("20240500"), "2024-05");
    EXPECT_EQ(iptc_date("20240000"), "2024");
    EXPECT_FALSE(iptc_date("2024-05-06") || iptc_date("20241306") || iptc_date("00000000"));
    EXPECT_EQ(iptc_time("070809+0200"), "07:08:09+02:00");
    EXPECT_EQ(iptc_time("070809"), "07:08:09");
    EXPECT_FALSE(iptc_time("0708") || iptc_time("250809+0200") || iptc_time("070809+02"));
}

TEST(CodedText, IsReadInItsCode) {
    constexpr auto native = TextEncoding::Native;
    const auto text = [&](const std::string& value, ByteOrder order = ByteOrder::Big) {
        const auto found = coded_text(value, order, native);
        if (!found)
            return std::string("none");
        const bool is_utf8 = found->encoding == TextEncoding::Utf8;
        return (is_utf8 ? "" : std::to_string(static_cast<int>(found->encoding)) + ":") +
               found->bytes;
    };
    const std::string ascii("ASCII\0\0\0", 8), jis("JIS\0\0\0\0\0", 8), unicode("UNICODE\0", 8),
        none(8, '\0');
    EXPECT_EQ(text(ascii + std::string("Hello  \0\0", 9)), "Hello");
    EXPECT_EQ(text(ascii + "Gr\xC3\xBC\xC3\x9F"), "Gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(text(ascii + "Gr\xFC"), "0:Gr\xFC");
    EXPECT_EQ(text(none + "Hello"), "Hello");
    EXPECT_EQ(text(none + "\x01\x02"), "none");
    EXPECT_EQ(text("something else"), "none");
    EXPECT_EQ(text(none + std::string(20, '\0')), "");
    EXPECT_EQ(text(""), "");
    // The order that the block has, and the other one where that makes no sense.
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        for (const std::u16string_view each : {u"Zürich, 5 €", u"日本語のテキスト", u"Привет"}) {
            EXPECT_EQ(text(unicode + utf16(each, order), order), utf8_from_utf16(each));
            EXPECT_EQ(text(unicode + utf16(each, order), ByteOrder::Little), utf8_from_utf16(each));
            EXPECT_EQ(text(unicode + utf16(each, order), ByteOrder::Big), utf8_from_utf16(each));
        }
        EXPECT_EQ(text(unicode + utf16(u"\xFEFF中", order)), "中");
        EXPECT_EQ(text(unicode + utf16(u"中", order), order), "中"); // either order is a character
    }
    EXPECT_EQ(text(unicode + "Stored in bytes"), "Stored in bytes");
    // U+65E5 U+672C is 467C 4B5C in JIS, 93FA 967B in Shift JIS.
    EXPECT_EQ(text(jis + "\x46\x7C\x4B\x5C"), "7:\x93\xFA\x96\x7B");
    EXPECT_EQ(text(jis + "A\x1B$B\x46\x7C\x1B(BZ"), "7:A\x93\xFAZ");
    EXPECT_EQ(text(jis + "\x93\xFA"), "7:\x93\xFA");
}

TEST(ExposureTimes, AreWrittenAsPhotographersDo) {
    const struct {
        std::uint32_t numerator, denominator;
        const char* expected;
    } cases[] = {{1, 250, "1/250"},
                 {10, 1250, "1/125"},
                 {3, 100, "1/33"},
                 {5, 10, "1/2"},
                 {1, 3, "1/3"},
                 {3, 10, "0.3"},
                 {25, 10, "2.5"},
                 {30, 1, "30"},
                 {0, 5, "0"},
                 {1, 0, "-"},
                 {1, 4294967295, "1/4294967295"}};
    for (const auto& each : cases)
        EXPECT_EQ(exposure_text(each.numerator, each.denominator).value_or("-"), each.expected);
}

const TiffDirectories photograph{
    .first = {ascii(271, "M\xC3\xBCller"),
              ascii(306, "2024:05:06 07:08:09"),
              {258, Short, {8, 8, 8}},
              bytes(40091, utf16(u"Titel ü\0", ByteOrder::Little)),
              {700, Byte, {}, "packet"},
              {0xC4A5, Undefined, {}, std::string("\0\1", 2)}},
    .exif = {{33434, Rational, {1, 250}},
             {33437, Rational, {28, 10}},
             {37380, SignedRational, {0xFFFFFFFF, 3}},
             undefined(36864, "0232"),
             undefined(37121, std::string("\1\2\3\0", 4)),
             undefined(41729, "\1"),
             ascii(36880, "+02:00"),
             ascii(37520, "12"),
             ascii(36867, "0000:00:00 00:00:00"),
             undefined(37500, "note"),
             undefined(37510, std::string("UNICODE\0", 8) + utf16(u"Grüße", ByteOrder::Little)),
             {42034, Rational, {24, 1, 70, 1, 28, 10, 0, 0}},
             {33437, Rational, {1, 1}}},
    .gps = {bytes(0, std::string("\2\3\0\0", 4)),
            ascii(1, "S"),
            {2, Rational, {48, 1, 30, 1, 0, 1}},
            ascii(3, "E"),
            {4, Rational, {11, 1, 45, 1, 0, 1}},
            bytes(5, "\1"),
            {6, Rational, {105, 10}},
            {7, Rational, {7, 1, 8, 1, 95, 10}},
            ascii(29, "2024:05:06"),
            undefined(27, std::string("ASCII\0\0\0GPS", 11))},
    .interoperability = {ascii(1, "R98")}};

TEST(MetadataValues, GiveTagsByNameInJson) {
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little}) {
        const std::string file = with_tags(photograph, order);
        EXPECT_EQ(answer("GetExif -Format=JSON", file),
                  "{\"Exif\":{\"Make\":\"M\xC3\xBCller\","
                  "\"DateTime\":\"2024-05-06T07:08:09.12+02:00\",\"BitsPerSample\":[8,8,8],"
                  "\"XPTitle\":\"Titel \xC3\xBC\",\"Tag0xC4A5\":\"0001\",\"ExposureTime\":0.004,"
                  "\"FNumber\":2.8,\"ExposureBiasValue\":-0.3333333333333333,"
                  "\"ExifVersion\":\"0232\",\"ComponentsConfiguration\":[1,2,3,0],\"SceneType\":1,"
                  "\"OffsetTime\":\"+02:00\",\"SubSecTime\":\"12\","
                  "\"DateTimeOriginal\":\"0000:00:00 00:00:00\","
                  "\"UserComment\":\"Gr\xC3\xBC\xC3\x9F"
                  "e\",\"LensSpecification\":[24,70,2.8,null],"
                  "\"InteroperabilityIndex\":\"R98\"}}");
        EXPECT_EQ(answer("GetGPS -Format=JSON", file),
                  "{\"GPS\":{\"GPSVersionID\":[2,3,0,0],\"GPSLatitudeRef\":\"S\","
                  "\"GPSLatitude\":[48,30,0],\"GPSLongitudeRef\":\"E\",\"GPSLongitude\":[11,45,0],"
                  "\"GPSAltitudeRef\":1,\"GPSAltitude\":10.5,\"GPSTimeStamp\":\"07:08:09.5Z\","
                  "\"GPSDateStamp\":\"2024-05-06\",\"GPSProcessingMethod\":\"GPS\","
                  "\"Latitude\":-48.5,\"Longitude\":11.75,\"Altitude\":-10.5,"
                  "\"DateTime\":\"2024-05-06T07:08:09.5Z\"}}");
    }
}

TEST(MetadataValues, AreBoundedWhereTagsAreNot) {
    const std::string file = with_tags({.first = {{273, Long, std::vector<std::uint32_t>(1025, 7)},
                                                  undefined(347, std::string(1025, '\1')),
                                                  {700, Long, {1}, {}, 0xFFFFFFFF},
                                                  {320, Short, {1}, {}, 0xFFFFFFF0, 8},
                                                  undefined(34377, "8BIM")}});
    EXPECT_EQ(answer("GetExif -Format=JSON", file),
              "{\"Exif\":{\"StripOffsets\":\"(1025 numbers)\",\"JPEGTables\":\"(1025 bytes)\","
              "\"ColorMap\":\"(4294967280 numbers)\"}}");
}

TEST(MetadataValues, GiveDatasetsByName) {
    const std::string envelope = dataset(1, 90, "\x1B%G");
    const std::string datasets =
        dataset(2, 0, std::string("\0\4", 2)) + dataset(2, 5, "T\xC3\xAF") + dataset(2, 25, "one") +
        dataset(2, 55, "20240506") + dataset(2, 25, "two") + dataset(2, 60, "070809+0200") +
        dataset(2, 90, "A") + dataset(2, 90, "B") + dataset(2, '\xDD', "?");
    const std::string expected =
        "\"RecordVersion\":4,\"ObjectName\":\"T\xC3\xAF\",\"Keywords\":[\"one\",\"two\"],"
        "\"DateCreated\":\"2024-05-06\",\"TimeCreated\":\"07:08:09+02:00\",\"City\":[\"A\",\"B\"],"
        "\"Dataset2_221\":\"?\"}}";
    EXPECT_EQ(answer("GetIPTC -Format=JSON", jpeg({photoshop(resource(0x0404, datasets))})),
              "{\"IPTC\":{" + expected);
    EXPECT_EQ(
        answer("GetIPTC -Format=JSON", jpeg({photoshop(resource(0x0404, envelope + datasets))})),
        "{\"IPTC\":{\"CodedCharacterSet\":\"UTF8\"," + expected);
    // What is no UTF-8 is read as the host does without a declaration.
    EXPECT_EQ(answer("GetIPTC -Format=JSON",
                     jpeg({photoshop(
                         resource(0x0404, dataset(2, 5, "\xEF") + dataset(2, 7, "\xC3\xAF")))})),
              "{\"IPTC\":{\"ObjectName\":\"\xC3\xAF\",\"EditStatus\":\"\xC3\x83\xC2\xAF\"}}");
}

TEST(XmpModel, ReadsTheFormsOfRdf) {
    const struct {
        const char* properties;
        const char* expected;
    } cases[] = {
        {"<dc:format>image/jpeg</dc:format>", R"({"dc":{"format":"image/jpeg"}})"},
        {"<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>A</rdf:li><rdf:li "
         "xml:lang='de'>B</rdf:li></rdf:Alt></dc:title>",
         R"({"dc":{"title":{"x-default":"A","de":"B"}}})"},
        {"<dc:subject> <rdf:Bag> <rdf:li>a</rdf:li> <rdf:li>b &amp; c</rdf:li> </rdf:Bag> "
         "</dc:subject>",
         R"({"dc":{"subject":["a","b & c"]}})"},
        {"<dc:rights><rdf:Alt><rdf:li>a</rdf:li></rdf:Alt></dc:rights><dc:date><rdf:Seq/></"
         "dc:date>",
         R"({"dc":{"rights":["a"],"date":[]}})"},
        // Structures: an element, a type of its own, parseType, attributes.
        {"<own:s><rdf:Description><stRef:a>1</stRef:a><own:a>2</own:a></rdf:Description></own:s>",
         R"({"own":{"s":{"a":"1","own:a":"2"}}})"},
        {"<own:s><own:Type stRef:a='1'/></own:s>", R"({"own":{"s":{"a":"1"}}})"},
        {"<own:s rdf:parseType='Resource'><stRef:a>1</stRef:a><stRef:b "
         "rdf:parseType='Resource'><own:c>2</own:c></stRef:b></own:s>",
         R"({"own":{"s":{"a":"1","b":{"c":"2"}}}})"},
        {"<own:s stRef:a='1' stRef:b='2'/>", R"({"own":{"s":{"a":"1","b":"2"}}})"},
        {"<own:s><rdf:Bag><rdf:li rdf:parseType='Resource'><own:a>1</own:a></rdf:li><rdf:li "
         "own:a='2'/></rdf:Bag></own:s>",
         R"({"own":{"s":[{"a":"1"},{"a":"2"}]}})"},
        // Qualifiers leave the value.
        {"<own:q rdf:parseType='Resource'><rdf:value>v</rdf:value><own:why>w</own:why></own:q>",
         R"({"own":{"q":"v"}})"},
        {"<own:q rdf:value='v' own:why='w'/>", R"({"own":{"q":"v"}})"},
        {"<own:q><rdf:Description rdf:value='x'><rdf:value>v</rdf:value></rdf:Description></own:q>",
         R"({"own":{"q":"v"}})"},
        {"<own:u rdf:resource='http://a/'/><own:e/><own:e>second</own:e>",
         R"({"own":{"u":"http://a/","e":""}})"},
        {"<xap:Rating>5</xap:Rating>", R"({"xmp":{"Rating":"5"}})"},
        // The packet calls "dc" what is another namespace.
        {"<dc:a xmlns:dc='urn:else'>1</dc:a><dc:b>2</dc:b>",
         R"({"dc_2":{"a":"1"},"dc":{"b":"2"}})"},
        {"<a xmlns='urn:1'>1</a><a xmlns='urn:2'>2</a>", R"({"ns":{"a":"1"},"ns_2":{"a":"2"}})"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(xmp_json(rdf(each.properties)), each.expected) << each.properties;
    EXPECT_EQ(xmp_json(rdf("<dc:b>2</dc:b>", "xap:Label='x' dc:format='f'")),
              R"({"xmp":{"Label":"x"},"dc":{"format":"f","b":"2"}})");
    const XmpModel model =
        XmpModel::read(rdf("<own:q xml:lang='fr'>v</own:q><own:r rdf:value='v' own:why='w'/>"));
    ASSERT_EQ(model.properties().size(), 2u);
    EXPECT_EQ(model.properties()[0].language, "fr");
    ASSERT_EQ(model.properties()[1].qualifiers.size(), 1u);
    EXPECT_EQ(model.properties()[1].qualifiers[0].name.local, "why");
    for (const char* nothing : {"", "no XML", "<a/>", "<x xmlns:rdf='urn:other'><rdf:RDF/></x>"})
        EXPECT_EQ(xmp_json(nothing), "{}");
}

// Packets made to take long, or to take much.
TEST(XmpModel, EndsHostilePacketsEarly) {
    const auto began = std::chrono::steady_clock::now();
    const std::string kept = "<dc:format>f</dc:format>";
    const std::string expected = R"({"dc":{"format":"f")";
    const auto repeated = [](const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i)
            all += text;
        return all;
    };
    // Entities of entities: what declares them ends the reading.
    std::string entities = "<!DOCTYPE x [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 20; ++i)
        entities += "<!ENTITY a" + std::to_string(i) + " \"" +
                    repeated("&a" + std::to_string(i - 1) + ";", 10) + "\">";
    EXPECT_EQ(xmp_json(entities + "]>" + rdf("<dc:format>&a19;</dc:format>")), "{}");
    EXPECT_EQ(xmp_json("<!DOCTYPE x SYSTEM 'file:///etc/passwd'>" + rdf(kept)), "{}");

    // Deeper than anything is; what stands before stays.
    const std::string deep =
        xmp_json(rdf(kept + repeated("<own:a rdf:parseType='Resource'>", 10'000)));
    EXPECT_TRUE(deep.starts_with(expected)) << deep.substr(0, 80);
    EXPECT_TRUE(StrictJson::accepts(deep));
    EXPECT_LT(deep.size(), 2000u);

    // Attributes and elements in the hundred thousands.
    std::string attributes;
    for (int i = 0; i < 120'000; ++i)
        attributes += "own:a" + std::to_string(i) + "='' ";
    for (const std::string& packet :
         {rdf(kept + "<own:s " + attributes + "/>"), rdf(kept + repeated("<own:a/>", 120'000)),
          rdf(kept + repeated("<rdf:Description rdf:about=''/>", 120'000)),
          rdf(kept + "<own:b><rdf:Bag>" + repeated("<rdf:li/>", 120'000) + "</rdf:Bag></own:b>")}) {
        const std::string json = xmp_json(packet);
        EXPECT_TRUE(json.starts_with(expected));
        EXPECT_LT(json.size(), 4'000'000u);
        EXPECT_TRUE(StrictJson::accepts(json));
    }
    // A namespace of a megabyte, which each name would repeat.
    const std::string long_name = "xmlns:l='" + std::string(1 << 20, 'u') + "'";
    EXPECT_EQ(xmp_json(rdf(kept + "<own:l " + long_name + ">" + repeated("<l:a/>", 10'000))),
              expected + "}}");
    // Cut off, or broken: the value in which that happens is the last one.
    const std::string whole = rdf(kept + "<dc:source>s</dc:source>");
    for (std::size_t size = 0; size < whole.size(); size += 7)
        EXPECT_TRUE(StrictJson::accepts(xmp_json(whole.substr(0, size))));
    EXPECT_EQ(xmp_json(rdf(kept + "<dc:a></dc:b>")), expected + R"(,"a":""}})");
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_LT(took, std::chrono::seconds(60)); // seconds on an idle machine with sanitizers
}

TEST(MetadataValues, AreAskedForByName) {
    const std::string file = jpeg(
        {exif_segment(build_tiff(ByteOrder::Big, photograph)),
         segment(
             SegmentMarker::App1,
             std::string("http://ns.adobe.com/xap/1.0/\0", 29) +
                 rdf("<dc:title><rdf:Alt><rdf:li xml:lang='de'>T\n2</rdf:li></rdf:Alt></dc:title>"
                     "<dc:subject><rdf:Bag><rdf:li>a</rdf:li><rdf:li>b</rdf:li></rdf:Bag></"
                     "dc:subject>",
                     "xap:Label='L'")),
         photoshop(resource(0x0404, dataset(2, 105, "Head") + dataset(2, 25, "k")))});
    const std::pair<const char*, const char*> cases[] = {
        {"-GetTag=ExposureTime", "1/250"},
        {"-GetTag=33434", "1/250"},
        {"-gettag=0x829A", "1/250"},
        {"-GetTag=exif.exposuretime", "1/250"},
        {"-GetTag=Tag0xC4A5", "0001"},
        {"-GetTag=FNumber", "2.8"},
        {"-GetTag=BitsPerSample", "8\r8\r8"},
        {"-GetTag=DateTime", "2024-05-06T07:08:09.12+02:00"},
        {"-GetTag=GPS.DateTime", "2024-05-06T07:08:09.5Z"},
        {"-GetTag=GPSLatitude", "-48.50000000"},
        {"-GetTag=Latitude", "-48.50000000"},
        {"-GetTag=Altitude", "-10.5"},
        {"-GetTag=Headline", "Head"},
        {"-GetTag=IPTC.Keywords", "k"},
        {"-GetTag=dc:title", "T\n2"},
        {"-GetTag=XMP.dc:subject", "a\rb"},
        {"-GetTag=\"xmp:Label\"", "L"},
        {"-GetTag=Headline -GetTag=City -GetTag=dc:subject -GetTag=dc:title", "Head\r\ra, b\rT 2"},
        {"-GetTag=Headline\r-GetTag=FNumber\r", "Head\r2.8"},
        {"-GetTag=Headline -GetTag=City -Format=JSON", "{\"Headline\":\"Head\",\"City\":null}"},
        {"-GetTag=City", "-2026"},
        {"-GetTag=City -GetTag=own:x -Format=JSON", "-2026"},
        {"-GetTag=Wrong", "-50"},
        {"-GetTag=Headline -GetTag=Wrong", "-50"},
        {"-GetTag=", "-50"},
        {"-GetTag=0x", "-50"},
        {"-GetTag=70000", "-50"},
        {"-GetTag=GPS.Headline", "-50"},
        {"-GetTag=XMP.title", "-50"},
    };
    for (const auto& [switches, expected] : cases)
        EXPECT_EQ(answer(switches, file), expected) << switches;
}

TEST(MetadataValues, TakeEveryKindThatIsThere) {
    const std::string exif = build_tiff(ByteOrder::Big, {.first = {ascii(271, "A")}});
    const std::string file =
        jpeg({exif_segment(exif), segment(SegmentMarker::Com, "said"),
              photoshop(resource(0x0404, dataset(2, 105, "H")) + resource(0x040B, "http://a/"))});
    const std::string packet = rdf("<dc:format>f</dc:format>");
    EXPECT_EQ(
        answer("-GetAll -Format=JSON", file),
        R"({"Exif":{"Make":"A"},"IPTC":{"Headline":"H"},"Comment":"said","ImageURL":"http://a/"})");
    EXPECT_EQ(answer("GetExif GetXMP GetIPTC GetJPEGComment -Format=JSON", file),
              R"({"Exif":{"Make":"A"},"IPTC":{"Headline":"H"},"Comment":"said"})");
    EXPECT_EQ(answer("-GetAll", file),
              "\r##IPTC 105\rH\r##END 105\r##EXIF 271\rA\r##END 271\r##JCOM\rsaid\r##END \r"
              "http://a/");
    EXPECT_EQ(answer("-GetAll", with_packet(packet)).find("http://ns.adobe.com/xap/1.0/\r<?xp"),
              0u);
    EXPECT_EQ(answer("-GetAll -Format=JSON", with_packet(packet)),
              R"({"XMP":{"dc":{"format":"f"}}})");
    for (const char* switches : {"-GetAll", "-GetAll -Format=JSON", "GetXMP -Format=JSON"})
        EXPECT_EQ(answer(switches, jpeg({})), "-2026") << switches;
    EXPECT_EQ(answer("-GetAll -Format=JSON", "no image"), "-2026");
    EXPECT_NE(
        answer("-GetAll -Format=JSON", png({png_chunk("tEXt", std::string("Title\0one", 9)),
                                            png_chunk("tEXt", std::string("Title\0two", 9)),
                                            png_chunk("tEXt", std::string("Author\0\xE4", 8))}))
            .find(R"("Text":{"Title":["one","two"],"Author":"ä"})"),
        std::string::npos);
}

TEST(ReadableText, ReplacesWhatOnlyProgramsRead) {
    const auto section = [](const std::string& word, int tag, const std::string& value) {
        const std::string number = std::to_string(tag);
        return "|##" + word + " " + number + "|" + value + "|##END " + number;
    };
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little}) {
        const std::string file = with_tags(photograph, order);
        const std::string exif = metadata_of("GetExif -Readable", file);
        for (const auto& [tag, value] : std::initializer_list<std::pair<int, std::string>>{
                 {271, "M\xC3\xBCller"},
                 {306, "2024-05-06T07:08:09.12+02:00"},
                 {258, "8"}, // as without the switch
                 {40091, "Titel \xC3\xBC"},
                 {33434, "1/250"},
                 {33437, "2.8"},
                 {36867, "0000:00:00 00:00:00"},
                 {37510, "Gr\xC3\xBC\xC3\x9F"
                         "e"}})
            EXPECT_NE(exif.find(section("EXIF", tag, value)), std::string::npos) << tag << exif;
        const std::string gps = metadata_of("GetGPS -Readable", file);
        EXPECT_NE(gps.find(section("GPS", 2, "-48.50000000")), std::string::npos) << gps;
        EXPECT_NE(gps.find(section("GPS", 7, "07:08:09.5Z")), std::string::npos) << gps;
        EXPECT_NE(gps.find(section("GPS", 29, "2024-05-06")), std::string::npos) << gps;
        // Without the switch nothing of it.
        EXPECT_NE(metadata_of("GetExif", file).find("|<0:M\xC3\xBCller>|"), std::string::npos);
        EXPECT_NE(metadata_of("GetExif", file).find("|0.004|"), std::string::npos);
    }
    const std::string packet = rdf("<dc:format>\xC3\xBC</dc:format>");
    EXPECT_EQ(metadata_of("GetXMP", with_packet(packet)).find("<0:"), 29u);
    EXPECT_EQ(metadata_of("GetXMP -Readable", with_packet(packet)).find("<0:"), std::string::npos);
    EXPECT_EQ(metadata_of("GetIPTC -Readable",
                          jpeg({photoshop(resource(0x0404, dataset(2, 55, "20240506") +
                                                               dataset(2, 5, "\xE4")))})),
              "|##IPTC 55|2024-05-06|##END 55|##IPTC 5|<0:\xE4>|##END 5");
}

// Whatever real files hold, and what is left of them when they are damaged, is JSON.
TEST(MetadataValues, OfRealFilesAreJson) {
    const auto files = real_files({"jpeg", "jpeg2", "tiff", "tiff2", "png", "png2", "raw", "raw2",
                                   "icc", "psd", "movie", "other", "picture-hostile"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    int answered = 0;
    for (const auto& path : files) {
        const std::string bytes = bytes_of(path).substr(0, 4 << 20);
        for (const std::size_t size : {bytes.size(), bytes.size() / 2, std::size_t{3000}}) {
            const std::string json = answer("-GetAll -Format=JSON", bytes.substr(0, size));
            if (json.starts_with('-'))
                continue;
            ++answered;
            EXPECT_TRUE(StrictJson::accepts(json)) << path << " of " << size;
        }
    }
    EXPECT_GT(answered, 400);
}

} // namespace
} // namespace vell::metadata
