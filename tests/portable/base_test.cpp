// Numbers as text, Windows errors as codes, and days as numbers.
#include "src/base/number_text.h"
#include "src/params/calendar_time.h"
#include "src/windows/error.h"

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

TEST(Win32Errors, HaveTheirCodesOrPass) {
    struct Case {
        std::int32_t error;
        std::int32_t code;
    };
    for (const Case& c :
         {Case{0, 0}, Case{2, -43}, Case{3, -120}, Case{5, -47}, Case{32, -47}, Case{8, -108},
          Case{38, -39}, Case{80, -48}, Case{183, -48}, Case{87, -50}, Case{123, -37},
          Case{131, -80}, Case{112, 112}, Case{-7, -7}, Case{100000, 100000}})
        EXPECT_EQ(number(error_from_win32(c.error)), c.code) << c.error;
}

TEST(Win32Errors, OfDisksAndOfTheShellHaveCodesOfTheirOwn) {
    EXPECT_EQ(disk_error(2401), ErrorCode::Busy);
    EXPECT_EQ(disk_error(3), ErrorCode::VolumeNotFound);
    EXPECT_EQ(number(disk_error(1326)), 1326);
    EXPECT_EQ(disk_error(5), ErrorCode::Busy);
    EXPECT_EQ(deletion_error(5), ErrorCode::Busy);
    for (const int own : {0x71, 124, 0x88})
        EXPECT_EQ(number(deletion_error(own)), own);
    EXPECT_EQ(deletion_error(123), static_cast<ErrorCode>(123)); // ERROR_INVALID_NAME elsewhere
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
