// What the stand-in FMWrapper.dll counts: on that rest all checks for leaks, and those of calls
// that fail.
#include "console/fmwrapper/control.h"

#include <gtest/gtest.h>

#include <utility>

namespace vell::test {
namespace {

class StandIn : public testing::Test {
  protected:
    StandIn() { StandIn_Reset(); }
    ~StandIn() override { StandIn_Reset(); }
    int taken_code() { return std::exchange(status.code, 0); }

    fm::Status status; // of every call
};

TEST_F(StandIn, CountsObjectsAndCalls) {
    using console::StandInObject;
    fm::Data* data = FM_Data_Constructor1(&status);
    const std::int64_t before = StandIn_TotalLiveObjects();
    fm::Text* made = FM_Text_Constructor1(&status);
    FM_Data_GetAsNumber(data, &status); // owned by the data
    EXPECT_EQ(StandIn_TotalLiveObjects(), before + 1);
    StandIn_FailCall(2, console::StandInFailure::Unknown);
    EXPECT_EQ(FM_Text_GetSize(made, &status), 0u);
    EXPECT_EQ(taken_code(), 0);
    EXPECT_EQ(FM_Data_Constructor1(&status), nullptr);
    EXPECT_EQ(taken_code(), 2);
    EXPECT_STREQ(StandIn_FailedCallName(), "FM_Data_Constructor1");
    StandIn_FailCall(1, console::StandInFailure::Unknown);
    FM_Text_Delete(made, &status); // counted, but it deletes
    EXPECT_FALSE(StandIn_FailureDelivered());
    EXPECT_EQ(StandIn_TotalLiveObjects(), before);
    EXPECT_STREQ(StandIn_ObjectName(StandInObject::ExprEnv), "ExprEnv");
    FM_Data_Delete(data, &status);
}

fm::Errcode any_body(std::int16_t, const fm::ExprEnv*, const fm::DataVect*, fm::Data*) {
    return 0;
}

TEST_F(StandIn, RegistersEachIdOnce) {
    fm::QuadChar* plugin = FM_QuadChar_Constructor2('T', 'e', 's', 't', &status);
    fm::Text* text = FM_Text_Constructor1(&status);
    const auto add = [&] {
        return FM_ExprEnv_RegisterExternalFunctionEx(plugin, 7, text, text, text, 1, -1, 0xFF00,
                                                     any_body, &status);
    };
    const auto add_step = [&] {
        return FM_ExprEnv_RegisterScriptStep(plugin, 7, text, text, text, 0xFF00, any_body,
                                             &status);
    };
    EXPECT_EQ(std::pair(add(), add_step()), std::pair(fm::Errcode{0}, fm::Errcode{0}));
    EXPECT_EQ(std::pair(add(), add_step()), std::pair(fm::Errcode{956}, fm::Errcode{956}));
    EXPECT_EQ(FM_ExprEnv_UnRegisterExternalFunction(plugin, 7, &status), 0);
    EXPECT_EQ(FM_ExprEnv_UnRegisterExternalFunction(plugin, 7, &status), 959);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 0);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 959);
    FM_Text_Delete(text, &status);
    FM_QuadChar_Delete(plugin, &status);
}

} // namespace
} // namespace vell::test
