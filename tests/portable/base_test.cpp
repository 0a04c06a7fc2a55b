// Numbers as text, JSON, and days as numbers.
#include "src/base/json_writer.h"
#include "src/base/number_text.h"
#include "src/params/calendar_time.h"

#include <gtest/gtest.h>

#include <limits>

namespace vell {
namespace {

TEST(NumberText, IsExactAndUnlocalised) {
    EXPECT_EQ(to_text(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(to_text(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(to_text(0.1, 17), "0.10000000000000001");
    EXPECT_EQ(to_text(123456789.0, 6), "1.23457e+08");
    EXPECT_EQ(to_text(-0.5, 15), "-0.5");
    EXPECT_EQ(to_text(1e-200 / 3.0, 500).size(), 99u);
}

TEST(JsonWriter, WritesWhatEveryParserReads) {
    JsonWriter json;
    json.begin_object();
    json.member("plain \xC3\xBC", "a\"b\\c\r\n\t\x01\x7F");
    json.member("no UTF-8", std::string_view("\xFF\xED\xA0\x80 \xE2\x82", 7));
    json.member("a half", std::u16string_view(u"\xD800 \u20AC"));
    json.key("numbers");
    json.begin_array();
    json.number(std::numeric_limits<std::int64_t>::min());
    json.number(std::numeric_limits<std::uint64_t>::max());
    json.number(0.1);
    json.number(1e300);
    json.number(std::numeric_limits<double>::quiet_NaN());
    json.number(-std::numeric_limits<double>::infinity());
    json.end_array();
    json.key("empty");
    json.begin_object();
    json.end_object();
    json.key("last");
    json.boolean(true);
    json.end_object();
    EXPECT_EQ(json.take(),
              "{\"plain \xC3\xBC\":\"a\\\"b\\\\c\\r\\n\\t\\u0001\x7F\","
              "\"no UTF-8\":\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD\","
              "\"a half\":\"\xEF\xBF\xBD \xE2\x82\xAC\","
              "\"numbers\":[-9223372036854775808,18446744073709551615,0.1,1e+300,null,null],"
              "\"empty\":{},\"last\":true}");
}

TEST(CalendarTime, DaysCountFromYearOne) {
    const auto day = [](int year, int month, int day_of_month) {
        return params::day_number({year, month, day_of_month, 0, 0, 0});
    };
    EXPECT_EQ(day(1, 1, 1), 1);
    EXPECT_EQ(day(1970, 1, 1), 719163);
    EXPECT_EQ(day(2000, 3, 1) - day(2000, 2, 28), 2);
    EXPECT_EQ(day(1900, 3, 1) - day(1900, 2, 28), 1);
    EXPECT_EQ(params::seconds_of_day({1, 1, 1, 23, 59, 59}), 86399);
}

} // namespace
} // namespace vell
