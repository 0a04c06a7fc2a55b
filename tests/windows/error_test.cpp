// Windows errors as codes.
#include "src/windows/error.h"

#include <gtest/gtest.h>

namespace vell {
namespace {

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

} // namespace
} // namespace vell
