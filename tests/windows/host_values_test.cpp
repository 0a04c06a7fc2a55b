// Values on their way between the host and the plug-in.
#include "src/host/bridge/host_call_object.h"
#include "src/host/bridge/host_data.h"
#include "src/host/bridge/late_entry_points.h"
#include "src/host/bridge/styled_text.h"
#include "tests/windows/plugin_fixture.h"

#include <zlib.h>

#include <array>
#include <limits>

namespace vell::test {
namespace {

using host::Container;
using host::Number;
using host::QuadChar;
using host::Text;
using params::TextEncoding;

std::u16string text_of(const Number& number) {
    const console::HostData data = console::make_data();
    host::store_number(data.get(), number);
    return console::to_value(data.get()).as_text();
}

class HostValues : public Plugin {};

TEST_F(HostValues, NumbersAreExactOnEveryHost) {
    for (const int api_version : {50, 67}) { // without and with 64-bit numbers
        host::find_late_entry_points(static_cast<std::int16_t>(api_version));
        EXPECT_EQ(host::late_entry_points().assign_int64 != nullptr, api_version == 67);
        for (const std::int64_t value :
             {std::int64_t{0}, std::int64_t{2147483647}, std::int64_t{2147483648},
              std::int64_t{-2147483648}, std::int64_t{-2147483649},
              std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
            Number number;
            number.assign(value);
            EXPECT_EQ(text_of(number), to_utf16(std::to_wstring(value)));
        }
    }
}

TEST_F(HostValues, IntegersAreCutAtTheirRange) {
    const auto integer = [](const char16_t* text) {
        const console::HostData data = console::to_data(Value(text));
        fm::Status status;
        return host::to_integer(FM_Data_GetAsNumber(data.get(), &status));
    };
    EXPECT_EQ(integer(u"2147483647"), 2147483647);
    EXPECT_EQ(integer(u"2147483648"), 2147483648);
    EXPECT_EQ(integer(u"99999999999999999999"), 2147483648);
    EXPECT_EQ(integer(u"-2147483648"), -2147483648);
    EXPECT_EQ(integer(u"-2147483649"), -2147483649);
    EXPECT_EQ(integer(u"-1e30"), -2147483649);
    EXPECT_EQ(integer(u"12.9"), 12);
    EXPECT_EQ(integer(u"none"), 0);
}

// All encodings by their numbers, both ways; some through texts longer than the pieces they travel
// in, with zero characters among them.
TEST_F(HostValues, TextTravelsInEveryEncoding) {
    const std::pair<std::string, std::u16string> samples[] = {
        {"\xE4\x80", u"\u00E4\u20AC"}, // Wine's own code page is 1252
        {"\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600"},
        {"\x80\xE1", u"\u00C7\u00DF"},
        {"\x80", u"\u20AC"},
        {"\x80", u"\u00C4"},
        {"\xE9\x80", u"\u00E9\u0080"},
        {"\x93\xFA\x96\x7B", u"\u65E5\u672C"},
        {"\x93\xFA\x96\x7B\xB1", u"\u65E5\u672C\uFF71"},
        {"\xC7\xD1", u"\uD55C"},
        {"\xC7\xD1\x81\x41", u"\uD55C\uAC02"},
        {"\xD0\x65", u"\uD55C"},
        {"\xA4\xA4", u"\u4E2D"},
        {"\xA4\xA4", u"\u4E2D"},
        {"\xD6\xD0", u"\u4E2D"},
        {"\xD6\xD0\x81\x40", u"\u4E2D\u4E02"},
        {"\x80", u"\u0410"},
        {"\xC0", u"\u0410"},
        {"\xB0", u"\u0410"},
        {"\x81", u"\u0100"},
        {"\xA5", u"\u0104"},
        {"\xA1", u"\u0104"},
        {"\xDA", u"\u011E"},
        {"\xD0\x80", u"\u011E\u20AC"},
        {"\xA1", u"\u0126"},
        {"\xD0\x80", u"\u011E\u0080"},
        {"\xC0", u"\u0104"},
        {"\xA2", u"\u0138"},
        {"\xB0", u"\u0660"},
        {"\x81", u"\u067E"},
        {"\xAC\xC7", u"\u060C\u0627"},
        {"\xB0", u"\u0391"},
        {"\xA2", u"\u0386"},
        {"\xB6", u"\u0386"},
        {"\xA6", u"\u20AA"},
        {"\xA4", u"\u20AA"},
        {"\xDF", u"\u2017"},
        {"\xA4", u"\u20AC"},
    };
    for (std::size_t i = 0; i < std::size(samples); ++i) {
        SCOPED_TRACE(i);
        // The odd byte puts the ends of pieces inside of characters of several bytes.
        const std::string part = 'x' + samples[i].first + '\0';
        std::string bytes;
        std::u16string units;
        for (std::size_t n = i % 7 == 0 || i == 9 ? 1'200'000 / part.size() : 300; n > 0; --n) {
            bytes += part;
            units.append(u"x").append(samples[i].second).append(1, u'\0');
        }
        Text text;
        text.assign_bytes(bytes, static_cast<TextEncoding>(i));
        EXPECT_TRUE(text.to_utf16() == units);
        EXPECT_TRUE(host::to_bytes(text.get(), static_cast<TextEncoding>(i)) == bytes);
    }
    EXPECT_EQ(host::to_bytes(Text(u"\u20AC1").get(), TextEncoding::AsciiWindows), "\x80"
                                                                                  "1");
    EXPECT_EQ(host::to_bytes(Text(u"").get(), TextEncoding::Utf8), "");
}

TEST_F(HostValues, TextsAreEdited) {
    Text text(u"Hello world");
    text.insert(5, Text(std::string_view(", big")));
    EXPECT_EQ(text.to_utf16(), u"Hello, big world");
    EXPECT_EQ(text.find_ignoring_case(Text(u"WORLD")), 11u);
    EXPECT_EQ(text.find_ignoring_case(Text(u"moon")), std::u16string::npos);
    text.erase(5, 5);
    text.append(Text(u"!"));
    EXPECT_EQ(text.to_utf16(), u"Hello world!");
}

TEST_F(HostValues, ParametersThatCannotBeEncodedAreReported) {
    const console::HostDataVector vector = console::make_data_vector();
    fm::Status status;
    for (const char16_t* text : {u"", u"caf\u00E9", u"\u20AC"}) {
        const console::HostData data = console::to_data(Value(text));
        FM_DataVect_PushBack(vector.get(), data.get(), &status);
    }
    const console::HostData result = console::make_data();
    host::HostCallObject call(nullptr, vector.get(), result.get(), false);
    using enum params::Unencodable;
    EXPECT_EQ(*call.encode(call.text(1), TextEncoding::BytesOnly, Replace), "caf\xE9");
    EXPECT_EQ(*call.encode(call.text(2), TextEncoding::Utf8, Refuse), "\xE2\x82\xAC");
    EXPECT_EQ(*call.encode(call.text(2), TextEncoding::AsciiWindows, Refuse), "\x80");
    EXPECT_EQ(*call.encode(u"\u65E5", TextEncoding::AsciiMac, Replace), "?");
    EXPECT_EQ(*call.encode(call.text(9), TextEncoding::AsciiMac, Refuse), "");
    const auto unreadable = call.encode(u"\u65E5", TextEncoding::AsciiMac, Refuse);
    ASSERT_FALSE(unreadable);
    EXPECT_EQ(call.encode(call.text(2), TextEncoding::BytesOnly, Replace).error(),
              unreadable.error());
    EXPECT_EQ(call.encode(u"a", static_cast<TextEncoding>(99), Replace).error(),
              unreadable.error());
    host::store_code(result.get(), unreadable.error());
    EXPECT_EQ(console::to_value(result.get()).as_text(),
              u"VellParamErr: XP7_GetBytesImproved failed");
    host::store_code(result.get(), ErrorCode::Ok);
    EXPECT_EQ(console::to_value(result.get()).as_text(), u"0");
    host::store_code(result.get(), ErrorCode::NotFound);
    EXPECT_EQ(console::to_value(result.get()).as_text(), u"$$-43");
}

TEST_F(HostValues, DatesAndTimesArriveWhole) {
    const params::CalendarTime time{2021, 1, 1, 13, 4, 5};
    const host::DateTime when(time);
    EXPECT_EQ(host::day_number(when.get()), 737791);
    EXPECT_EQ(host::seconds_of_day(when.get()), 47045);
    EXPECT_EQ(host::to_calendar_time(when.get()), time);
    host::Data data;
    fm::Data* const target = data.get();
    const auto stored = [&] {
        return console::to_value(target).as_text();
    };
    host::store_time_stamp(target, when);
    EXPECT_EQ(stored(), u"1/1/2021 1:04:05 PM");
    EXPECT_EQ(host::native_type(target), fm::NativeType::TimeStamp);
    host::store_date(target, when);
    EXPECT_EQ(stored(), u"1/1/2021");
    host::store_time(target, when);
    EXPECT_EQ(stored(), u"13:04:05");

    host::DateTime other;
    other.set_seconds(std::int64_t{737790} * 86400 + 59);
    EXPECT_EQ(host::to_calendar_time(other.get()), (params::CalendarTime{2021, 1, 1, 0, 0, 59}));
    other.set_day_number(1);
    other.set_time(when);
    EXPECT_EQ(host::to_calendar_time(other.get()), (params::CalendarTime{1, 1, 1, 13, 4, 5}));
    host::DateTime third(params::CalendarTime{2024, 2, 29, 1, 2, 3});
    third.set_date(when);
    EXPECT_EQ(host::to_calendar_time(third.get()), (params::CalendarTime{2021, 1, 1, 1, 2, 3}));
}

TEST_F(HostValues, NumbersAreCalculatedWith) {
    Number number(40);
    number.add(Number(5));
    number.subtract(Number(3));
    number.multiply(Number(-7));
    EXPECT_EQ(text_of(number), u"-294");
    number.negate();
    number.increment(10);
    number.decrement();
    EXPECT_EQ(text_of(number), u"303");
    const Number copy(number.get());
    EXPECT_FALSE(host::is_greater(copy.get(), number));
    number.decrement();
    EXPECT_TRUE(host::is_greater(copy.get(), number));
    EXPECT_FALSE(host::is_less(copy.get(), number));
}

TEST_F(HostValues, ParametersAreReadByType) {
    const console::HostDataVector vector = console::make_data_vector();
    fm::Status status;
    host::Data data;
    host::store_time_stamp(data.get(), host::DateTime(params::CalendarTime{2020, 5, 6, 7, 8, 9}));
    FM_DataVect_PushBack(vector.get(), data.get(), &status);
    Container container;
    container.add_stream(QuadChar("FILE"), "bytes");
    host::store_container(data.get(), container);
    FM_DataVect_PushBack(vector.get(), data.get(), &status);
    data.clear(fm::NativeType::Text);
    EXPECT_EQ(host::to_utf16(host::text_of(data.get())), u"");

    const host::ParameterVector parameters(vector.get());
    EXPECT_EQ(parameters.size(), 2u);
    EXPECT_EQ(host::to_calendar_time(parameters.time_stamp(0)),
              (params::CalendarTime{2020, 5, 6, 7, 8, 9}));
    EXPECT_EQ(host::native_type(parameters.at(1)), fm::NativeType::Binary);
    EXPECT_EQ(host::stream_count(parameters.container(1)), 1);
    EXPECT_EQ(host::stream_type(parameters.container(1), 0), host::mac_type("FILE"));
    EXPECT_THROW(parameters.at(2), host::HostFailure);
}

TEST_F(HostValues, StylesStayWithTheirPieces) {
    const host::TextStyle style = host::text_style("Bold ITALIC green");
    EXPECT_EQ(style.face, fm::face_bold | fm::face_italic);
    Text text(u"plain ");
    host::append_styled(text, u"styled", style);
    host::append_styled(text, u" plain", host::text_style("bolt"));
    EXPECT_EQ(text.to_utf16(), u"plain styled plain");
    fm::Status status;
    fm::CharacterStyle* seen = FM_CharacterStyle_Constructor1(&status);
    for (const std::uint32_t position : {0u, 6u, 11u, 12u}) {
        FM_Text_GetStyle(text.get(), seen, position, &status);
        const bool styled = position == 6 || position == 11;
        EXPECT_EQ(FM_CharacterStyle_GetFace(seen, &status), styled ? style.face : 0);
        ASSERT_EQ(FM_CharacterStyle_IsColorEnabled(seen, &status), styled);
        const fm::Color* color = styled ? FM_CharacterStyle_GetColor(seen, &status) : nullptr;
        EXPECT_EQ(color ? FM_Color_GetGreen(color, &status) : 255, 255);
    }
    FM_CharacterStyle_Delete(seen, &status);
}

std::string gzip(const std::string& bytes) {
    z_stream stream{};
    constexpr int gzip_header = 16;
    deflateInit2(&stream, 9, Z_DEFLATED, MAX_WBITS + gzip_header, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

Result<std::string> contents(const Container& container) {
    std::string bytes;
    VELL_TRY(host::read_main_stream(container.get(), [&](std::string_view piece) -> Result<void> {
        bytes += piece;
        return {};
    }));
    return bytes;
}

TEST_F(HostValues, ContainersGiveTheirMainStream) {
    host::find_late_entry_points(67);
    Container container;
    EXPECT_EQ(contents(container).error(), ErrorCode::NotFound);
    host::add_file(container, QuadChar("JPEG"), u"photo.jpg", "jpeg bytes", {640, 480});
    EXPECT_EQ(*contents(container), "jpeg bytes");
    EXPECT_EQ(host::file_name(container.get()), u"photo.jpg");
    fm::Status status;
    std::int16_t width = 0;
    std::int16_t height = 0;
    FM_BinaryData_GetSIZEData(container.get(), &width, &height, &status);
    EXPECT_EQ(width, 640);
    EXPECT_EQ(height, 480);

    container.add_stream(QuadChar("FILE"), "file bytes");
    EXPECT_EQ(*contents(container), "file bytes");
    container.add_stream(QuadChar("MAIN"), "JPEG");
    EXPECT_EQ(*contents(container), "jpeg bytes");
    container.add_stream(QuadChar("MAIN"), "none"); // names a stream that is not there
    EXPECT_EQ(*contents(container), "file bytes");

    const Container copy(container.get());
    EXPECT_EQ(*contents(copy), "file bytes");
    Container assigned;
    assigned.assign(copy.get());
    EXPECT_EQ(host::file_name(assigned.get()), u"photo.jpg");
}

TEST_F(HostValues, CompressedContainersExpand) {
    std::string bytes;
    for (int i = 0; i < 100'000; ++i)
        bytes += std::to_string(i * 7919 % 10007);
    const std::string packed = gzip(bytes);
    ASSERT_GT(packed.size(), 64u * 1024);
    Container container;
    container.add_stream(QuadChar("ZLIB"), packed);
    const auto expanded = contents(container);
    ASSERT_TRUE(expanded);
    EXPECT_TRUE(*expanded == bytes);

    for (const std::string& bad :
         {packed.substr(0, packed.size() / 2), std::string("not compressed"), std::string()}) {
        Container damaged;
        damaged.add_stream(QuadChar("ZLIB"), bad);
        EXPECT_EQ(contents(damaged).error(), ErrorCode::CompressedDataDamaged);
    }
}

} // namespace
} // namespace vell::test
