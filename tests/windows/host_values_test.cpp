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

// Through texts longer than the pieces they travel in, with zero characters among them.
TEST_F(HostValues, TextTravelsInItsEncoding) {
    const struct {
        int encoding;
        std::string bytes;
        std::u16string units;
    } samples[] = {
        {0, "\xE4\x80", u"\u00E4\u20AC"}, // Wine's own code page is 1252
        {1, "\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600"},
        {2, "\x80\xE1", u"\u00C7\u00DF"},
        {7, "\x93\xFA\x96\x7B\xB1", u"\u65E5\u672C\uFF71"},
        {9, "\xC7\xD1\x81\x41", u"\uD55C\uAC02"},
        {14, "\xD6\xD0\x81\x40", u"\u4E2D\u4E02"},
        {36, "\xA4", u"\u20AC"},
    };
    for (const auto& sample : samples) {
        SCOPED_TRACE(sample.encoding);
        const auto encoding = static_cast<TextEncoding>(sample.encoding);
        // The odd byte puts the ends of pieces inside of characters of several bytes.
        const std::string part = 'x' + sample.bytes + '\0';
        std::string bytes;
        std::u16string units;
        for (std::size_t n = 1'200'000 / part.size(); n > 0; --n) {
            bytes += part;
            units.append(u"x").append(sample.units).append(1, u'\0');
        }
        Text text;
        text.assign_bytes(bytes, encoding);
        EXPECT_TRUE(text.to_utf16() == units);
        EXPECT_TRUE(host::to_bytes(text.get(), encoding) == bytes);
    }
    EXPECT_EQ(host::to_bytes(Text(u"").get(), TextEncoding::Utf8), "");
}

TEST_F(HostValues, ParametersAreEncodedOrRefused) {
    const console::HostDataVector vector = console::make_data_vector();
    fm::Status status;
    for (const char16_t* text : {u"", u"caf\u00E9", u"\u20AC", u"3e9", u"-3e9", u"-7.9", u""}) {
        const console::HostData data = console::to_data(Value(text));
        FM_DataVect_PushBack(vector.get(), data.get(), &status);
    }
    const console::HostData result = console::make_data();
    host::HostCallObject call(host::the_plugin(), nullptr, vector.get(), result.get(), true);
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

    // Options of a step stay within 32 bits.
    EXPECT_EQ(call.step_option(3), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(call.step_option(4), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(call.step_option(5), -7);
    EXPECT_EQ(call.step_option(6), params::Call::not_given);
    EXPECT_EQ(call.step_option(7), params::Call::not_given);
}

TEST_F(HostValues, DatesAndTimesArriveWhole) {
    const params::CalendarTime time{2021, 1, 1, 13, 4, 5};
    const host::DateTime when(time);
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
