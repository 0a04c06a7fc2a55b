// What the stand-in FMWrapper.dll does beyond what calls through the plug-in show: texts that
// change with their styles, and objects that are counted.
#include "console/fmwrapper/control.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vell::test {
namespace {

using fm::to_end;

// Every call writes the one status; a test of failures takes the code after the call.
class StandIn : public testing::Test {
  protected:
    StandIn() { StandIn_Reset(); }
    ~StandIn() override {
        FM_Text_Delete(subject, &status);
        FM_Text_Delete(other, &status);
        FM_CharacterStyle_Delete(style, &status);
        FM_Data_Delete(data, &status);
        StandIn_Reset();
    }
    int taken_code() { return std::exchange(status.code, 0); }

    std::u16string units(const fm::Text* self) {
        std::u16string result(FM_Text_GetSize(self, &status), u'\0');
        FM_Text_GetUnicode(self, result.data(), 0, to_end, &status);
        return result;
    }
    void set(fm::Text* self, std::uint16_t face, std::uint32_t position, std::uint32_t size) {
        FM_CharacterStyle_SetFace(style, face, &status);
        FM_Text_SetStyle(self, style, position, size, &status);
    }
    // One letter a unit: b bold, i italic, . plain.
    std::string faces(const fm::Text* self) {
        std::string result;
        for (std::uint32_t i = 0; i < FM_Text_GetSize(self, &status); ++i) {
            FM_Text_GetStyle(self, style, i, &status);
            const std::uint16_t face = FM_CharacterStyle_GetFace(style, &status);
            result += face == fm::face_bold ? 'b' : face == fm::face_italic ? 'i' : '.';
        }
        return result;
    }
    void set_data(const fm::Text* value) {
        FM_Data_SetAsText(data, value, FM_Data_GetLocale(data, &status), 1, &status);
    }

    fm::Status status;
    fm::Text* subject = FM_Text_Constructor1(&status);
    fm::Text* other = FM_Text_Constructor1(&status);
    fm::CharacterStyle* style = FM_CharacterStyle_Constructor1(&status);
    fm::Data* data = FM_Data_Constructor1(&status);
};

TEST_F(StandIn, RunsOfStylesFollowTheText) {
    FM_Text_AssignUnicode(subject, u"0123456789", &status);
    set(subject, fm::face_bold, 2, 4);
    set(subject, fm::face_italic, 5, to_end);
    set_data(subject);
    set_data(FM_Data_GetAsText(data, &status)); // from itself

    FM_Text_AssignUnicode(other, u"xyz", &status);
    FM_Text_InsertText(subject, other, 3, &status);
    EXPECT_EQ(faces(subject), "..b...bbiiiii");
    FM_Text_DeleteText(subject, 1, 6, &status);
    FM_Text_AppendText(subject, subject, 0, 3, &status);
    EXPECT_EQ(faces(subject), ".biiiii.bi");
    FM_Text_AppendText(other, subject, 1, 2, &status);
    FM_Text_AppendText(other, other, 0, 1, &status);
    FM_Text_InsertText(other, subject, 0, &status);
    EXPECT_EQ(faces(other), ".biiiii.bi...bi.");
    FM_Text_SetText(other, subject, 5, 4, &status);
    EXPECT_EQ(faces(other), "ii.b");
    FM_Text_DeleteText(subject, 0, to_end, &status);
    FM_Text_AppendText(subject, other, 3, 1, &status);
    EXPECT_EQ(faces(subject), "b");
    FM_Text_AssignUnicode(subject, u"new", &status);
    EXPECT_EQ(faces(subject), "...");
    EXPECT_EQ(faces(FM_Data_GetAsText(data, &status)), "..bbbiiiii"); // a copy
}

// On what it counts rest all checks for leaks, and those of calls that fail.
TEST_F(StandIn, CountsObjectsAndCalls) {
    using console::StandInObject;
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
}

fm::Errcode any_body(std::int16_t, const fm::ExprEnv*, const fm::DataVect*, fm::Data*) {
    return 0;
}

TEST_F(StandIn, RegistersEachIdOnce) {
    fm::QuadChar* plugin = FM_QuadChar_Constructor2('T', 'e', 's', 't', &status);
    const auto add = [&] {
        return FM_ExprEnv_RegisterExternalFunctionEx(plugin, 7, subject, other, subject, 1, -1,
                                                     0xFF00, any_body, &status);
    };
    const auto add_step = [&] {
        return FM_ExprEnv_RegisterScriptStep(plugin, 7, subject, other, subject, 0xFF00, any_body,
                                             &status);
    };
    EXPECT_EQ(std::pair(add(), add_step()), std::pair(fm::Errcode{0}, fm::Errcode{0}));
    EXPECT_EQ(std::pair(add(), add_step()), std::pair(fm::Errcode{956}, fm::Errcode{956}));
    EXPECT_EQ(FM_ExprEnv_UnRegisterExternalFunction(plugin, 7, &status), 0);
    EXPECT_EQ(FM_ExprEnv_UnRegisterExternalFunction(plugin, 7, &status), 959);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 0);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 959);
    FM_QuadChar_Delete(plugin, &status);
}

} // namespace
} // namespace vell::test
