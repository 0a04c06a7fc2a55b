// Numbers as text, and days as numbers.
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
