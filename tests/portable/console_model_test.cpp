// Decimal numbers, the calendar and the UTF-8 conversion of the console host.
#include "console/model/calendar.h"
#include "console/model/decimal.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace vell::console {
namespace {

Decimal decimal(const std::string& text) {
    const auto value = Decimal::parse(text);
    EXPECT_TRUE(value.has_value()) << text;
    return value.value_or(Decimal());
}

std::string quotient(const std::string& a, const std::string& b, int precision = 16) {
    return Decimal::divide(decimal(a), decimal(b), precision).value().to_text();
}

TEST(Decimal, RefusesWhatIsNoPlainNumber) {
    for (const char* text : {"", "-", ".", "1.2.3", "e5", "1e+", " 1", "1 ", "--1"})
        EXPECT_FALSE(Decimal::parse(text).has_value()) << text;
}

TEST(Decimal, ReadsAnyTextAsTheHostDoes) {
    for (const auto& row : test::table("number_texts.txt", 2)) {
        EXPECT_EQ(Decimal::from_any_text(utf16_from_utf8(row[0])).to_text(), row[1]);
        EXPECT_EQ(Decimal::parse(row[0]).value_or(decimal(row[1])).to_text(), row[1]);
    }
    EXPECT_EQ(decimal("1e400").to_text(), "1" + std::string(400, '0'));
    // A text of any length: digits that no number holds keep their weight.
    EXPECT_EQ(Decimal::from_any_text(std::u16string(1000, u'7')).to_text(),
              "7." + std::string(398, '7') + "8e999");
    EXPECT_EQ(Decimal::from_any_text(u"." + std::u16string(100'000, u'0') + u"1").to_text(), "0");
}

TEST(Decimal, ArithmeticIsExactAcrossTheSmallAndLargeForms) {
    EXPECT_EQ((decimal("9223372036854775807") + Decimal(1)).to_text(), "9223372036854775808");
    EXPECT_EQ((decimal("9223372036854775808") - Decimal(1)).to_int64(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ((-Decimal(std::numeric_limits<std::int64_t>::min())).to_text(),
              "9223372036854775808");
    EXPECT_EQ((decimal("1e30") - decimal("1e30") + decimal("1e-30")).to_text(),
              "." + std::string(29, '0') + "1");
    EXPECT_EQ((decimal("99999999999999999999") * decimal("-99999999999999999999")).to_text(),
              "-9999999999999999999800000000000000000001");
    // Far apart: the result has 400 digits, and what lies behind them is rounded away.
    EXPECT_EQ(decimal("1e4000") + decimal("1e-4000"), decimal("1e4000"));
    EXPECT_EQ(decimal("1e399") + decimal(".5"), decimal("1e399") + Decimal(1));
    EXPECT_EQ(decimal("1e400") - Decimal(1), decimal(std::string(400, '9')));
    // The ends of the range.
    EXPECT_EQ(decimal("9e9999") * Decimal(10), decimal(std::string(400, '9') + "e9600"));
    EXPECT_TRUE((decimal("1e-9999") * decimal("0.1")).is_zero());
}

TEST(Decimal, DivisionRoundsToItsPrecision) {
    EXPECT_EQ(quotient("-10", "3"), "-3.3333333333333333");
    EXPECT_EQ(quotient("1", "8", 2), ".13");
    EXPECT_EQ(quotient("1e-40", "3"), "." + std::string(40, '0') + "3333333333333333");
    EXPECT_EQ(quotient("1e300", "1e-300"), "1e600");
    EXPECT_FALSE(Decimal::divide(Decimal(1), Decimal()).has_value());

    // Long division against its inverse: (a * b + r) / b is a, rounded by r.
    std::mt19937_64 random(20200131);
    const auto number_below = [&random](std::size_t longest) {
        std::string text = "1";
        for (auto more = random() % longest; more > 0; --more)
            text += random() % 3 == 0 ? '9' : static_cast<char>('0' + random() % 10);
        return decimal(text);
    };
    for (int round = 0; round < 300; ++round) {
        const Decimal a = number_below(180);
        const Decimal b = number_below(180) + Decimal(2);
        EXPECT_EQ(Decimal::divide(a * b + b - Decimal(1), b, 0), a + Decimal(1));
        EXPECT_EQ(Decimal::divide(a * b + Decimal(1), b, 0), a);
        EXPECT_EQ((a + b) - b, a);
    }
}

TEST(Decimal, OrdersByValue) {
    const char* ascending[] = {
        "-12345678901234567890", "-1.2", "-1e-500", "0", "1.2", "9223372036854775807",
        "9223372036854775808",   "1e20", "1e9000"};
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t j = 0; j < std::size(ascending); ++j)
            EXPECT_EQ(decimal(ascending[i]) <=> decimal(ascending[j]), i <=> j)
                << ascending[i] << " and " << ascending[j];
}

TEST(Decimal, ConvertsToMachineNumbers) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(decimal("-1.99").to_int64(), -1);
    EXPECT_EQ(decimal("9223372036854775807.9").to_int64(), most);
    EXPECT_EQ(decimal("-9223372036854775808").to_int64(), least);
    EXPECT_EQ(decimal("1e-30").to_int64(), 0);

    for (const double value : {0.1, -2.5, 1e300, 5e-324, 123456789.125, 1.7976931348623157e308})
        EXPECT_EQ(Decimal::from_double(value).to_double(), value);
    EXPECT_TRUE(Decimal::from_double(std::nan("")).is_zero());
    EXPECT_EQ(decimal("1e400").to_double(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(decimal("-1e-400").to_double(), 0.0);
}

TEST(Decimal, RoundsAndTruncates) {
    EXPECT_EQ(Decimal::floor(decimal("-1.1")).to_text(), "-2");
    EXPECT_EQ(Decimal::round(decimal("-2.5"), 0).to_text(), "-3");
    EXPECT_EQ(Decimal::round(decimal("1250"), -2).to_text(), "1300");
}

TEST(Calendar, CountsDaysFromYearOne) {
    EXPECT_EQ(day_number(1, 1, 1), first_day);
    EXPECT_EQ(day_number(1970, 1, 1), 719'163);

    // Every day of two eras, and some before year 1, follows the one before it.
    CivilDate date{-3, 1, 1};
    for (std::int64_t day = day_number(-3, 1, 1); day < 300'000; ++day) {
        ASSERT_EQ(civil_date(day), date);
        ASSERT_EQ(day_number(date.year, date.month, date.day), day);
        if (++date.day > days_in_month(date.year, date.month))
            date = date.month == 12 ? CivilDate{date.year + 1, 1, 1}
                                    : CivilDate{date.year, date.month + 1, 1};
    }
}

TEST(Calendar, WritesTheHostsTextForms) {
    EXPECT_EQ(date_text(day_number(50, 1, 2)), "1/2/0050");
    EXPECT_EQ(time_text(decimal("-90061.25")), "-25:01:01.25");
    const std::int64_t day = day_number(2020, 12, 31);
    EXPECT_EQ(time_stamp_text(join_time_stamp(day, Decimal(0))), "12/31/2020 12:00:00 AM");
    EXPECT_EQ(time_stamp_text(join_time_stamp(day, Decimal(47045))), "12/31/2020 1:04:05 PM");
    EXPECT_EQ(time_stamp_text(join_time_stamp(day + 1, decimal("-.5"))),
              "12/31/2020 11:59:59.5 PM");
}

TEST(Calendar, ReadsTheHostsTextForms) {
    EXPECT_EQ(parse_date(u"1-2-0007"), day_number(7, 1, 2));
    EXPECT_EQ(civil_date(parse_date(u"1/1/20").value()).year % 100, 20);
    for (const char16_t* text : {u"", u"2/29/2021", u"13/1/2020", u"0/1/2020", u"1/1/4001",
                                 u"1/1/0000", u"1/1", u"1/1/2020x", u"1/1/12345678901"})
        EXPECT_FALSE(parse_date(text).has_value());

    EXPECT_EQ(parse_time(u"1:04:05.250 pm"), decimal("47045.25"));
    EXPECT_EQ(parse_time(u"12:00 AM"), Decimal(0));
    EXPECT_EQ(parse_time(u"-25:00:01"), Decimal(-90001));
    for (const char16_t* text :
         {u"", u"1:", u"13:00 PM", u"0:00 AM", u"-1:00 AM", u"1:00:00:00", u"1:00 M"})
        EXPECT_FALSE(parse_time(text).has_value());

    for (const char16_t* text : {u"12/31/2020 1:04:05 PM", u"12/31/2020  13:04:05"})
        EXPECT_EQ(time_stamp_text(parse_time_stamp(text).value()), "12/31/2020 1:04:05 PM");
    EXPECT_EQ(parse_time_stamp(u"1/1/0001"), Decimal(0));
    EXPECT_FALSE(parse_time_stamp(u"12/31/20201:00").has_value());
}

} // namespace
} // namespace vell::console
