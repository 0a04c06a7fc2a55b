// Metadata as values: JSON, single values, and texts that a person reads.
#include "src/metadata/get_metadata.h"
#include "src/metadata/values/character_code.h"
#include "src/metadata/values/dates.h"
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

std::string with_datasets(const std::string& datasets) {
    return jpeg({photoshop(resource(0x0404, datasets))});
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
    };
    for (const auto& each : exif)
        EXPECT_EQ(exif_date(each.text, each.fraction, each.offset), each.expected);
    for (const char* none : {"0000:00:00 00:00:00", "2024:13:06 07:08:09", "2024:05:06 25:08:09",
                             "2024:05:06 07:08", "    :  :     :  :  ", ""})
        EXPECT_FALSE(exif_date(none, "", "")) << none;
    EXPECT_EQ(iptc_date("20240506"), "2024-05-06");
    EXPECT_EQ(iptc_date("20240500"), "2024-05");
    EXPECT_EQ(iptc_date("20240000"), "2024");
    EXPECT_FALSE(iptc_date("2024-05-06") || iptc_date("20241306") || iptc_date("00000000"));
    EXPECT_EQ(iptc_time("070809+0200"), "07:08:09+02:00");
    EXPECT_EQ(iptc_time("070809"), "07:08:09");
    EXPECT_FALSE(iptc_time("0708") || iptc_time("250809+0200") || iptc_time("070809+02"));
}

TEST(CodedText, IsReadInItsCode) {
    const auto text = [&](const std::string& value, ByteOrder order = ByteOrder::Big) {
        const auto found = coded_text(value, order, TextEncoding::Native);
        MetadataText all;
        if (found)
            all.append(found->bytes, found->encoding);
        return found ? shown(all) : "none";
    };
    const std::string ascii("ASCII\0\0\0", 8), jis("JIS\0\0\0\0\0", 8), unicode("UNICODE\0", 8),
        none(8, '\0');
    EXPECT_EQ(text(ascii + std::string("Hello  \0\0", 9)), "Hello");
    EXPECT_EQ(text(ascii + "Gr\xC3\xBC\xC3\x9F"), "Gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(text(ascii + "Gr\xFC"), "<0:Gr\xFC>");
    EXPECT_EQ(text(none + "Hello"), "Hello");
    EXPECT_EQ(text(none + "\x01\x02"), "none");
    EXPECT_EQ(text("something else"), "none");
    EXPECT_EQ(text(none + std::string(20, '\0')), "");
    EXPECT_EQ(text(""), "");
    // The order that the block has, and the other one where that makes no sense.
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        for (const std::u16string_view each : {u"Zürich, 5 €", u"日本語のテキスト", u"Привет"}) {
            EXPECT_EQ(text(unicode + utf16(each, order), ByteOrder::Little), utf8_from_utf16(each));
            EXPECT_EQ(text(unicode + utf16(each, order), ByteOrder::Big), utf8_from_utf16(each));
        }
        EXPECT_EQ(text(unicode + utf16(u"\xFEFF中", order)), "中");
        EXPECT_EQ(text(unicode + utf16(u"中", order), order), "中"); // either order is a character
    }
    EXPECT_EQ(text(unicode + "Stored in bytes"), "Stored in bytes");
    // U+65E5 U+672C is 467C 4B5C in JIS, 93FA 967B in Shift JIS.
    EXPECT_EQ(text(jis + "\x46\x7C\x4B\x5C"), "<7:\x93\xFA\x96\x7B>");
    EXPECT_EQ(text(jis + "A\x1B$B\x46\x7C\x1B(BZ"), "<7:A\x93\xFAZ>");
    EXPECT_EQ(text(jis + "\x93\xFA"), "<7:\x93\xFA>");
}

TEST(ExposureTimes, AreWrittenAsPhotographersDo) {
    const std::pair<std::uint32_t, std::uint32_t> times[] = {
        {1, 250}, {10, 1250}, {3, 100}, {5, 10}, {1, 3},         {3, 10},
        {25, 10}, {30, 1},    {0, 5},   {1, 0},  {1, 4294967295}};
    std::string texts;
    for (const auto& [numerator, denominator] : times)
        texts += exposure_text(numerator, denominator).value_or("-") + " ";
    EXPECT_EQ(texts, "1/250 1/125 1/33 1/2 1/3 0.3 2.5 30 0 - 1/4294967295 ");
}

const TiffDirectories photograph{
    .first = {ascii(271, "M\xC3\xBCller"),
              ascii(306, "2024:05:06 07:08:09"),
              shorts(258, {8, 8, 8}),
              bytes(40091, utf16(u"Titel ü\0", ByteOrder::Little)),
              {700, Byte, {}, "packet"},
              {0xC4A5, Undefined, {}, std::string("\0\1", 2)}},
    .exif = {rationals(33434, {1, 250}),
             rationals(33437, {28, 10}),
             {37380, SignedRational, {0xFFFFFFFF, 3}},
             undefined(36864, "0232"),
             undefined(37121, std::string("\1\2\3\0", 4)),
             undefined(41729, "\1"),
             ascii(36880, "+02:00"),
             ascii(37520, "12"),
             ascii(36867, "0000:00:00 00:00:00"),
             undefined(37500, "note"),
             undefined(37510, std::string("UNICODE\0", 8) + utf16(u"Grüße", ByteOrder::Little)),
             rationals(42034, {24, 1, 70, 1, 28, 10, 0, 0}),
             rationals(33437, {1, 1})},
    .gps = {bytes(0, std::string("\2\3\0\0", 4)), ascii(1, "S"), rationals(2, {48, 1, 30, 1, 0, 1}),
            ascii(3, "E"), rationals(4, {11, 1, 45, 1, 0, 1}), bytes(5, "\1"),
            rationals(6, {105, 10}), rationals(7, {7, 1, 8, 1, 95, 10}), ascii(29, "2024:05:06"),
            undefined(27, std::string("ASCII\0\0\0GPS", 11))},
    .interoperability = {ascii(1, "R98")}};

TEST(MetadataValues, GiveTagsByNameInJson) {
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little}) {
        const std::string file = with_tags(photograph, order);
        EXPECT_EQ(answer("GetExif -Format=JSON", file),
                  R"({"Exif":{"Make":"Müller","DateTime":"2024-05-06T07:08:09.12+02:00",)"
                  R"("BitsPerSample":[8,8,8],"XPTitle":"Titel ü","Tag0xC4A5":"0001",)"
                  R"("ExposureTime":0.004,"FNumber":2.8,"ExposureBiasValue":-0.3333333333333333,)"
                  R"("ExifVersion":"0232","ComponentsConfiguration":[1,2,3,0],"SceneType":1,)"
                  R"("OffsetTime":"+02:00","SubSecTime":"12",)"
                  R"("DateTimeOriginal":"0000:00:00 00:00:00","UserComment":"Grüße",)"
                  R"("LensSpecification":[24,70,2.8,null],"InteroperabilityIndex":"R98"}})");
        EXPECT_EQ(answer("GetGPS -Format=JSON", file),
                  R"({"GPS":{"GPSVersionID":[2,3,0,0],"GPSLatitudeRef":"S",)"
                  R"("GPSLatitude":[48,30,0],"GPSLongitudeRef":"E","GPSLongitude":[11,45,0],)"
                  R"("GPSAltitudeRef":1,"GPSAltitude":10.5,"GPSTimeStamp":"07:08:09.5Z",)"
                  R"("GPSDateStamp":"2024-05-06","GPSProcessingMethod":"GPS","Latitude":-48.5,)"
                  R"("Longitude":11.75,"Altitude":-10.5,"DateTime":"2024-05-06T07:08:09.5Z"}})");
    }
}

TEST(MetadataValues, AreBoundedWhereTagsAreNot) {
    const std::string file = with_tags({.first = {longs(273, std::vector<std::uint32_t>(1025, 7)),
                                                  undefined(347, std::string(1025, '\1')),
                                                  {700, Long, {1}, {}, 0xFFFFFFFF},
                                                  {320, Short, {1}, {}, 0xFFFFFFF0, 8},
                                                  undefined(34377, "8BIM")}});
    EXPECT_EQ(answer("GetExif -Format=JSON", file),
              R"-({"Exif":{"StripOffsets":"(1025 numbers)","JPEGTables":"(1025 bytes)",)-"
              R"-("ColorMap":"(4294967280 numbers)"}})-");
}

TEST(MetadataValues, GiveDatasetsByName) {
    const std::string datasets =
        dataset(2, 0, std::string("\0\4", 2)) + dataset(2, 5, "T\xC3\xAF") + dataset(2, 25, "one") +
        dataset(2, 55, "20240506") + dataset(2, 25, "two") + dataset(2, 60, "070809+0200") +
        dataset(2, 90, "A") + dataset(2, 90, "B") + dataset(2, '\xDD', "?");
    const std::string expected =
        R"("RecordVersion":4,"ObjectName":"Tï","Keywords":["one","two"],)"
        R"("DateCreated":"2024-05-06","TimeCreated":"07:08:09+02:00","City":["A","B"],)"
        R"("Dataset2_221":"?"}})";
    const auto json = [](const std::string& block) {
        return answer("GetIPTC -Format=JSON", with_datasets(block));
    };
    EXPECT_EQ(json(datasets), R"({"IPTC":{)" + expected);
    EXPECT_EQ(json(dataset(1, 90, "\x1B%G") + datasets),
              R"({"IPTC":{"CodedCharacterSet":"UTF8",)" + expected);
    // What is no UTF-8 is read as the host does without a declaration.
    EXPECT_EQ(json(dataset(2, 5, "\xEF") + dataset(2, 7, "\xC3\xAF")),
              R"({"IPTC":{"ObjectName":"ï","EditStatus":"Ã¯"}})");
}

TEST(XmpModel, ReadsTheFormsOfRdf) {
    const std::pair<const char*, const char*> cases[] = {
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
    for (const auto& [properties, expected] : cases)
        EXPECT_EQ(xmp_json(rdf(properties)), expected) << properties;
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
        while (times-- > 0)
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
    EXPECT_TRUE(is_strict_json(deep));
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
        EXPECT_TRUE(is_strict_json(json));
    }
    // A namespace of a megabyte, which each name would repeat.
    const std::string long_name = "xmlns:l='" + std::string(1 << 20, 'u') + "'";
    EXPECT_EQ(xmp_json(rdf(kept + "<own:l " + long_name + ">" + repeated("<l:a/>", 10'000))),
              expected + "}}");
    // Cut off, or broken: the value in which that happens is the last one.
    const std::string whole = rdf(kept + "<dc:source>s</dc:source>");
    for (std::size_t size = 0; size < whole.size(); size += 7)
        EXPECT_TRUE(is_strict_json(xmp_json(whole.substr(0, size))));
    EXPECT_EQ(xmp_json(rdf(kept + "<dc:a></dc:b>")), expected + R"(,"a":""}})");
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_LT(took, std::chrono::seconds(60)); // seconds on an idle machine with sanitizers
}

TEST(MetadataValues, AreAskedForByName) {
    const std::string file = jpeg(
        {exif_segment(build_tiff(ByteOrder::Big, photograph)),
         packet_segment(
             rdf("<dc:title><rdf:Alt><rdf:li xml:lang='de'>T\n2</rdf:li></rdf:Alt></dc:title>"
                 "<dc:subject><rdf:Bag><rdf:li>a</rdf:li><rdf:li>b</rdf:li></rdf:Bag></dc:subject>",
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
    const std::string file =
        jpeg({exif_segment(tags_of({ascii(271, "A")}, ByteOrder::Big)),
              segment(SegmentMarker::Com, "said"),
              photoshop(resource(0x0404, dataset(2, 105, "H")) + resource(0x040B, "http://a/"))});
    const std::string packet = jpeg({packet_segment(rdf("<dc:format>f</dc:format>"))});
    const std::string texts = png({png_chunk("tEXt", std::string("Title\0one", 9)),
                                   png_chunk("tEXt", std::string("Title\0two", 9)),
                                   png_chunk("tEXt", std::string("Author\0\xE4", 8))});
    const std::string shared = R"({"Exif":{"Make":"A"},"IPTC":{"Headline":"H"},"Comment":"said")";
    const struct {
        const char* switches;
        std::string file;
        std::string expected;
    } cases[] = {
        {"-GetAll -Format=JSON", file, shared + R"(,"ImageURL":"http://a/"})"},
        {"GetExif GetXMP GetIPTC GetJPEGComment -Format=JSON", file, shared + "}"},
        {"-GetAll", file,
         "\r##IPTC 105\rH\r##END 105\r##EXIF 271\rA\r##END 271\r##JCOM\rsaid\r##END \rhttp://a/"},
        {"-GetAll -Format=JSON", packet, R"({"XMP":{"dc":{"format":"f"}}})"},
        {"-GetAll", jpeg({}), "-2026"},
        {"-GetAll -Format=JSON", jpeg({}), "-2026"},
        {"GetXMP -Format=JSON", jpeg({}), "-2026"},
        {"-GetAll -Format=JSON", "no image", "-2026"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(answer(each.switches, each.file), each.expected) << each.switches;
    EXPECT_TRUE(answer("-GetAll", packet).starts_with("http://ns.adobe.com/xap/1.0/\r<?xp"));
    EXPECT_TRUE(answer("-GetAll -Format=JSON", texts)
                    .contains(R"("Text":{"Title":["one","two"],"Author":"ä"})"));
}

TEST(ReadableText, ReplacesWhatOnlyProgramsRead) {
    const auto expect_in = [](const std::string& text,
                              std::initializer_list<const char*> sections) {
        for (const char* each : sections)
            EXPECT_TRUE(text.contains(tagged(each))) << each << " in " << text;
    };
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little}) {
        const std::string file = with_tags(photograph, order);
        // Of several numbers the first, as without the switch.
        expect_in(metadata_of("GetExif -Readable", file),
                  {"EXIF 271=Müller; EXIF 306=2024-05-06T07:08:09.12+02:00; EXIF 258=8; "
                   "EXIF 40091=Titel ü",
                   "EXIF 33434=1/250; EXIF 33437=2.8", "EXIF 36867=0000:00:00 00:00:00",
                   "EXIF 37510=Grüße"});
        expect_in(metadata_of("GetGPS -Readable", file),
                  {"GPS 2=-48.50000000", "GPS 7=07:08:09.5Z", "GPS 29=2024-05-06"});
        expect_in(metadata_of("GetExif", file), {"EXIF 271=<0:Müller>", "EXIF 33434=0.004"});
    }
    const std::string file = jpeg({packet_segment(rdf("<dc:format>\xC3\xBC</dc:format>"))});
    EXPECT_EQ(metadata_of("GetXMP", file).find("<0:"), 29u);
    EXPECT_EQ(metadata_of("GetXMP -Readable", file).find("<0:"), std::string::npos);
    EXPECT_EQ(metadata_of("GetIPTC -Readable",
                          with_datasets(dataset(2, 55, "20240506") + dataset(2, 5, "\xE4"))),
              tagged("IPTC 55=2024-05-06; IPTC 5=<0:\xE4>"));
}

// Whatever real files hold, and what is left of them when they are damaged, is JSON.
TEST(MetadataValues, OfRealFilesAreJson) {
    const auto files =
        real_files({"jpeg", "jpeg2", "tiff", "tiff2", "png", "png2", "raw", "raw2", "icc", "psd",
                    "movie", "movie2", "other", "picture", "picture-hostile"});
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
            EXPECT_TRUE(is_strict_json(json)) << path << " of " << size;
        }
    }
    EXPECT_GT(answered, 400);
}

} // namespace
} // namespace vell::metadata
