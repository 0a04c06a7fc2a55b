// Values, containers and moments of the stand-in FMWrapper.dll, and what it does on demand.
#include "tests/windows/standin_fixture.h"

#include <windows.h>

#include <array>
#include <thread>
#include <vector>

namespace vell::test {
namespace {

// Data --------------------------------------------------------------------------------------------

class StandInData : public StandInStyles {
  protected:
    ~StandInData() override {
        FM_Data_Delete(data, &status);
        FM_DateTime_Delete(moment, &status);
        FM_FixPt_Delete(number, &status);
        FM_Locale_Delete(locale, &status);
    }
    void set_text(const char16_t* value) {
        FM_Text_AssignUnicode(subject, value, &status);
        FM_Data_SetAsText(data, subject, locale, 1, &status);
    }
    std::u16string data_text() { return units(FM_Data_GetAsText(data, &status)); }
    std::array<int, 6> parts(const fm::DateTime* of) {
        return {FM_DateTime_GetYear(of, &status),   FM_DateTime_GetMonth(of, &status),
                FM_DateTime_GetDay(of, &status),    FM_DateTime_GetHour(of, &status),
                FM_DateTime_GetMinute(of, &status), FM_DateTime_GetSec(of, &status)};
    }
    std::u16string text_of(const fm::FixPt* of) {
        FM_Data_SetAsNumber(data, of, 2, &status);
        return data_text();
    }
    std::int32_t data_number() {
        return FM_FixPt_AsLong(FM_Data_GetAsNumber(data, &status), &status);
    }

    fm::Data* data = FM_Data_Constructor1(&status);
    fm::DateTime* moment = FM_DateTime_Constructor1(&status);
    fm::FixPt* number = fixed(0);
    fm::Locale* locale = FM_Locale_Constructor1(1, &status);
};

TEST_F(StandInData, TextReadsAsNumberAndMoment) {
    EXPECT_TRUE(FM_Data_IsEmpty(data, &status));
    set_text(u"");
    EXPECT_TRUE(FM_Data_IsEmpty(data, &status));
    set_text(u"7/4/2021 1:02:03 PM");
    EXPECT_FALSE(FM_Data_IsEmpty(data, &status));
    EXPECT_EQ(FM_Data_GetNativeType(data, &status), 1);
    const fm::DateTime* stamp = FM_Data_GetAsTimeStamp(data, &status);
    EXPECT_EQ(parts(stamp), (std::array{2021, 7, 4, 13, 2, 3}));
    EXPECT_EQ(FM_DateTime_GetHour(FM_Data_GetAsDate(data, &status), &status), 0);
    EXPECT_EQ(FM_DateTime_GetDaysSinceEpoch(FM_Data_GetAsTime(data, &status), &status), 1);

    // What was made of the old value does not outlive it.
    set_text(u"x12y");
    EXPECT_EQ(data_number(), 12);
    set_text(u"-3");
    EXPECT_EQ(data_number(), -3);
    EXPECT_EQ(FM_BinaryData_GetCount(FM_Data_GetBinaryData(data, &status), &status), 0);
}

TEST_F(StandInData, NumbersAndMomentsReadAsText) {
    FM_FixPt_AssignDouble(number, -0.25, &status);
    EXPECT_EQ(text_of(number), u"-.25");

    FM_DateTime_SetDaysSinceEpoch(moment, 737'975, &status); // 7/4/2021
    FM_FixPt_AssignInt(number, 3723, &status);
    FM_DateTime_SetSecsSinceMidnight(moment, number, &status);
    FM_Data_SetAsDate(data, moment, 3, &status);
    EXPECT_EQ(data_text(), u"7/4/2021");
    EXPECT_EQ(data_number(), 737'975);
    FM_Data_SetAsTime(data, moment, 4, &status);
    EXPECT_EQ(data_text(), u"1:02:03");
    EXPECT_EQ(data_number(), 3723);
    FM_Data_SetAsTimeStamp(data, moment, 5, &status);
    EXPECT_EQ(FM_Data_GetNativeType(data, &status), 5);
    EXPECT_EQ(data_text(), u"7/4/2021 1:02:03 AM");
    const fm::FixPt* seconds = FM_Data_GetAsNumber(data, &status);
    EXPECT_EQ(FM_FixPt_AsLong64(seconds, &status), 737'974LL * 86'400 + 3723);
    FM_Data_Clear(data, 1, &status);
    EXPECT_TRUE(FM_Data_IsEmpty(data, &status));
    EXPECT_EQ(data_text(), u"");
    FM_Data_Clear(data, 8, &status);
    EXPECT_EQ(taken_code(), 2);
}

TEST_F(StandInData, KeepsStylesAndMayBeSetToItself) {
    FM_Text_AssignUnicode(subject, u"plain bold", &status);
    set(subject, fm::face_bold, 6, 4);
    FM_Data_SetAsText(data, subject, locale, 1, &status);
    FM_Data_SetAsText(data, FM_Data_GetAsText(data, &status), FM_Data_GetLocale(data, &status), 1,
                      &status);
    EXPECT_EQ(data_text(), u"plain bold");
    EXPECT_EQ(faces(FM_Data_GetAsText(data, &status)), "......bbbb");
    set_text(u"15");
    FM_Data_SetAsNumber(data, FM_Data_GetAsNumber(data, &status), 2, &status);
    EXPECT_EQ(data_text(), u"15");
}

TEST_F(StandInData, VectorsOwnCopies) {
    fm::DataVect* vector = FM_DataVect_Constructor1(&status);
    set_text(u"1/2/2003 4:05:06");
    FM_DataVect_PushBack(vector, data, &status);
    const fm::Text* first = FM_DataVect_AtAsText(vector, 0, &status);
    for (int i = 0; i < 100; ++i) {
        set_text(u"8");
        FM_DataVect_PushBack(vector, data, &status);
    }
    EXPECT_EQ(FM_DataVect_Size(vector, &status), 101u);
    EXPECT_EQ(FM_DataVect_AtAsText(vector, 0, &status), first);
    EXPECT_EQ(units(first), u"1/2/2003 4:05:06");
    const fm::DateTime* stamp = FM_DataVect_AtAsTimeStamp(vector, 0, &status);
    EXPECT_EQ(FM_DateTime_GetSec(stamp, &status), 6);
    EXPECT_EQ(FM_FixPt_AsLong(FM_DataVect_AtAsNumber(vector, 100, &status), &status), 8);
    EXPECT_EQ(FM_BinaryData_GetCount(FM_DataVect_AtAsBinaryData(vector, 0, &status), &status), 0);
    EXPECT_EQ(FM_DataVect_At(vector, 101, &status), nullptr);
    EXPECT_EQ(taken_code(), 2);
    EXPECT_EQ(FM_DataVect_AtAsText(vector, to_end, &status), nullptr);
    EXPECT_EQ(taken_code(), 2);
    FM_DataVect_Delete(vector, &status);
}

TEST_F(StandInData, ContainersHoldOneStreamOfEachType) {
    fm::BinaryData* container = FM_BinaryData_Constructor1(&status);
    fm::QuadChar* file = FM_QuadChar_Constructor2('F', 'I', 'L', 'E', &status);
    fm::QuadChar* type = FM_QuadChar_Constructor1(&status);
    EXPECT_EQ(FM_QuadChar_GetMacType(type, &status), 0u);
    EXPECT_EQ(FM_QuadChar_GetMacType(file, &status), 0x46494C45u);
    EXPECT_EQ(FM_BinaryData_GetIndex(container, file, &status), -1);
    EXPECT_NE(FM_BinaryData_GetFNAMData(container, subject, &status), 0);

    FM_Text_AssignUnicode(subject, u"file:\u00E4.txt", &status);
    EXPECT_EQ(FM_BinaryData_AddFNAMData(container, subject, &status), 0);
    FM_BinaryData_Add(container, file, 3, "old", &status);
    FM_BinaryData_Add(container, file, 5, "bytes", &status);
    FM_BinaryData_AddSIZEData(container, 640, -1, &status);
    EXPECT_EQ(FM_BinaryData_GetCount(container, &status), 3);
    EXPECT_EQ(FM_BinaryData_GetSize(container, 1, &status), 5u);
    EXPECT_EQ(FM_BinaryData_GetSize(container, 3, &status), 0u);
    FM_BinaryData_GetType(container, 0, type, &status);
    EXPECT_EQ(FM_QuadChar_GetMacType(type, &status), 0x464E414Du); // FNAM
    std::int16_t width = 0;
    std::int16_t height = 0;
    FM_BinaryData_GetSIZEData(container, &width, &height, &status);
    EXPECT_EQ(std::pair(width, height), std::pair(std::int16_t{640}, std::int16_t{-1}));

    char buffer[6] = "-----";
    EXPECT_EQ(FM_BinaryData_GetData(container, 1, 3, 2, buffer, &status), 0);
    EXPECT_STREQ(buffer, "es---");
    EXPECT_NE(FM_BinaryData_GetData(container, 1, 3, 3, buffer, &status), 0);
    EXPECT_NE(FM_BinaryData_GetData(container, 1, 0xFFFFFFFF, 2, buffer, &status), 0);
    EXPECT_NE(FM_BinaryData_GetData(container, -1, 0, 1, buffer, &status), 0);
    EXPECT_STREQ(buffer, "es---");

    // A copy does not follow its source, and the data reads as its file name.
    fm::BinaryData* copy = FM_BinaryData_Constructor2(container, &status);
    FM_Data_SetBinaryData(data, copy, true, &status);
    FM_BinaryData_Add(copy, file, 1, "x", &status);
    EXPECT_EQ(FM_BinaryData_GetSize(container, 1, &status), 5u);
    EXPECT_EQ(FM_BinaryData_operatorAS(container, copy, &status), container);
    EXPECT_EQ(FM_BinaryData_GetSize(container, 1, &status), 1u);
    EXPECT_EQ(FM_BinaryData_GetSize(FM_Data_GetBinaryData(data, &status), 1, &status), 5u);
    EXPECT_EQ(FM_Data_GetNativeType(data, &status), 6);
    EXPECT_EQ(data_text(), u"file:\u00E4.txt");
    FM_Text_AssignUnicode(subject, u"", &status);
    FM_BinaryData_GetFNAMData(copy, subject, &status);
    EXPECT_EQ(units(subject), u"file:\u00E4.txt");

    FM_BinaryData_Delete(container, &status);
    FM_BinaryData_Delete(copy, &status);
    FM_QuadChar_Delete(file, &status);
    FM_QuadChar_Delete(type, &status);
}

TEST_F(StandInData, MomentsAreDaysAndSeconds) {
    FM_FixPt_AssignInt64(number, 63'745'063'449, &status); // 1/1/2021 1:04:09 PM and more
    FM_DateTime_SetSecondsSinceEpoch(moment, number, &status);
    EXPECT_EQ(FM_DateTime_GetDaysSinceEpoch(moment, &status), 63'745'063'449 / 86'400 + 1);
    fm::FixPt* seconds = fixed(0);
    FM_DateTime_GetSecsSinceMidnight(moment, seconds, &status);
    EXPECT_EQ(FM_FixPt_AsLong(seconds, &status), 63'745'063'449 % 86'400);
    FM_DateTime_GetSecondsSinceEpoch(moment, seconds, &status);
    EXPECT_TRUE(FM_FixPt_operatorEQ(seconds, number, &status));

    fm::DateTime* date = FM_DateTime_Constructor1(&status);
    FM_DateTime_SetDaysSinceEpoch(date, 737'975, &status);
    FM_DateTime_SetDate(moment, date, &status);
    EXPECT_EQ(FM_DateTime_GetDay(moment, &status), 4);
    FM_FixPt_AssignInt(seconds, -90'061, &status);
    FM_DateTime_SetSecsSinceMidnight(date, seconds, &status);
    FM_DateTime_SetTime(moment, date, &status);
    EXPECT_EQ(FM_DateTime_GetHour(moment, &status), -25);
    EXPECT_EQ(FM_DateTime_GetMinute(moment, &status), -1);
    EXPECT_EQ(FM_DateTime_GetDaysSinceEpoch(moment, &status), 737'975);
    FM_DateTime_Delete(date, &status);
    FM_FixPt_Delete(seconds, &status);
}

TEST_F(StandInData, NumbersAreFixedPoint) {
    fm::FixPt* other_number = FM_FixPt_Constructor1(3, 20, &status);
    FM_FixPt_AssignInt(number, 2, &status);
    FM_FixPt_Divide(number, other_number, number, &status);
    EXPECT_EQ(text_of(number), u".6666666666666667");
    FM_FixPt_Multiply(number, other_number, number, &status);
    FM_FixPt_Subtract(number, other_number, number, &status);
    FM_FixPt_Negate(number, &status);
    EXPECT_EQ(text_of(number), u".9999999999999999");

    FM_FixPt_AssignFixPt(number, other_number, &status);
    FM_FixPt_Increment(number, 5, &status);
    FM_FixPt_Decrement(number, 1, &status);
    EXPECT_TRUE(FM_FixPt_operatorGT(number, other_number, &status));
    EXPECT_FALSE(FM_FixPt_operatorLT(number, other_number, &status));
    FM_FixPt_Divide(number, other_number, number, &status); // with the precision it was assigned
    EXPECT_EQ(text_of(number), u"2.33333333333333333333");

    FM_FixPt_AssignInt64(number, INT64_MAX, &status);
    FM_FixPt_Add(number, number, number, &status);
    EXPECT_EQ(FM_FixPt_AsLong64(number, &status), INT64_MAX);
    EXPECT_EQ(FM_FixPt_AsLong(number, &status), INT32_MAX);
    EXPECT_EQ(FM_FixPt_AsFloat(number, &status), 18446744073709551614.0);
    FM_FixPt_AssignInt(other_number, 0, &status);
    EXPECT_NE(FM_FixPt_Divide(number, other_number, number, &status), 0);
    FM_FixPt_Delete(other_number, &status);
}

// Control -----------------------------------------------------------------------------------------

TEST_F(StandIn, FailsTheCallThatWasAskedFor) {
    fm::Text* subject = text(u"kept");
    StandIn_FailCall(2, console::StandInFailure::Allocation);
    EXPECT_EQ(FM_Text_GetSize(subject, &status), 4u);
    EXPECT_FALSE(StandIn_FailureDelivered());
    EXPECT_EQ(FM_Text_GetSize(subject, &status), 0u);
    EXPECT_EQ(taken_code(), 1);
    EXPECT_TRUE(StandIn_FailureDelivered());
    EXPECT_STREQ(StandIn_FailedCallName(), "FM_Text_GetSize");
    EXPECT_EQ(FM_Text_GetSize(subject, &status), 4u);

    const std::int64_t alive = StandIn_TotalLiveObjects();
    StandIn_FailCall(1, console::StandInFailure::Unknown);
    EXPECT_EQ(FM_Data_Constructor1(&status), nullptr);
    EXPECT_EQ(taken_code(), 2);
    EXPECT_EQ(StandIn_TotalLiveObjects(), alive);

    StandIn_FailCall(1, console::StandInFailure::Unknown);
    FM_Text_Delete(subject, &status); // counted, but it deletes
    EXPECT_EQ(StandIn_TotalLiveObjects(), alive - 1);
    EXPECT_FALSE(StandIn_FailureDelivered());
    StandIn_FailCall(1, console::StandInFailure::Unknown);
    StandIn_FailCall(0, console::StandInFailure::Unknown);
    const std::uint64_t calls = StandIn_CallCount();
    FM_Text_Delete(nullptr, &status);
    EXPECT_EQ(FM_Text_GetSize(nullptr, &status), 0u);
    EXPECT_EQ(taken_code(), 2);
    EXPECT_EQ(StandIn_CallCount(), calls + 2);
    StandIn_Reset();
    EXPECT_EQ(StandIn_CallCount(), 0u);
}

TEST_F(StandIn, CountsWhatIsAlive) {
    using console::StandInObject;
    const std::int64_t before = StandIn_TotalLiveObjects();
    const std::int64_t data_before = StandIn_LiveObjects(StandInObject::Data);
    fm::Data* data = FM_Data_Constructor1(&status);
    FM_Data_GetAsText(data, &status); // owned by the data
    FM_Data_GetAsNumber(data, &status);
    EXPECT_EQ(StandIn_TotalLiveObjects(), before + 1);
    EXPECT_EQ(StandIn_LiveObjects(StandInObject::Data), data_before + 1);
    EXPECT_STREQ(StandIn_ObjectName(StandInObject::Data), "Data");
    EXPECT_STREQ(StandIn_ObjectName(StandInObject::ExprEnv), "ExprEnv");
    FM_Data_Delete(data, &status);

    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            fm::Status own;
            for (int round = 0; round < 2000; ++round) {
                fm::Text* made = FM_Text_Constructor1(&own);
                FM_Text_Assign(made, "\xC3\xA4", (i * 7 + round) % 37, &own);
                FM_Text_Delete(made, &own);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(StandIn_TotalLiveObjects(), before);
}

fm::Errcode any_body(std::int16_t, const fm::ExprEnv*, const fm::DataVect*, fm::Data*) {
    return 0;
}

class StandInRegistry : public StandIn {
  protected:
    ~StandInRegistry() override {
        FM_QuadChar_Delete(plugin, &status);
        FM_Text_Delete(name, &status);
        FM_Text_Delete(rest, &status);
    }
    int add_function(std::int16_t id) {
        return FM_ExprEnv_RegisterExternalFunctionEx(plugin, id, name, rest, name, 1, -1, 0xFF00,
                                                     any_body, &status);
    }
    int add_step(std::int16_t id) {
        return FM_ExprEnv_RegisterScriptStep(plugin, id, name, rest, name, 0xFF00, any_body,
                                             &status);
    }
    int remove_function(std::int16_t id) {
        return FM_ExprEnv_UnRegisterExternalFunction(plugin, id, &status);
    }
    fm::QuadChar* plugin = FM_QuadChar_Constructor2('T', 'e', 's', 't', &status);
    fm::Text* name = text(u"Name");
    fm::Text* rest = text(u"Rest");
};

TEST_F(StandInRegistry, CollectsFunctionsAndSteps) {
    EXPECT_EQ(add_function(7), 0);
    EXPECT_EQ(
        FM_ExprEnv_RegisterExternalFunction(plugin, 8, name, rest, 0, 2, 4, any_body, &status), 0);
    EXPECT_EQ(add_step(7), 0);
    FM_Text_AssignUnicode(name, u"changed", &status);
    EXPECT_EQ(add_function(7), 956);
    EXPECT_EQ(add_step(7), 956);
    ASSERT_EQ(StandIn_FunctionCount(), 2u);
    ASSERT_EQ(StandIn_StepCount(), 1u);

    const console::StandInFunction& function = *StandIn_FunctionAt(0);
    EXPECT_EQ(std::string(function.plugin_id, 4), "Test");
    EXPECT_EQ(function.id, 7);
    EXPECT_EQ(std::u16string(function.name), u"Name");
    EXPECT_EQ(std::u16string(function.prototype), u"Rest");
    EXPECT_EQ(std::u16string(function.description), u"Name");
    EXPECT_EQ(function.min_args, 1);
    EXPECT_EQ(function.max_args, -1);
    EXPECT_EQ(function.flags, 0xFF00u);
    EXPECT_EQ(function.body, any_body);
    EXPECT_EQ(StandIn_FunctionAt(1)->description, nullptr);
    EXPECT_EQ(StandIn_FunctionAt(2), nullptr);
    EXPECT_EQ(std::u16string(StandIn_StepAt(0)->definition), u"Rest");
    EXPECT_EQ(StandIn_StepAt(1), nullptr);

    EXPECT_EQ(remove_function(7), 0);
    EXPECT_EQ(remove_function(7), 959);
    EXPECT_EQ(StandIn_FunctionAt(0)->id, 8);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 0);
    EXPECT_EQ(FM_ExprEnv_UnRegisterScriptStep(plugin, 7, &status), 959);
}

TEST_F(StandInRegistry, FailsRegistrationsOnDemand) {
    StandIn_FailRegistration(2, 1234);
    EXPECT_EQ(add_function(1), 0);
    EXPECT_EQ(add_step(1), 1234);
    EXPECT_EQ(add_step(1), 0);
    StandIn_FailUnregistration(1, 5);
    EXPECT_EQ(remove_function(1), 5);
    EXPECT_EQ(StandIn_FunctionCount(), 1u);
    EXPECT_EQ(remove_function(1), 0);
    StandIn_FailRegistration(1, 1234);
    StandIn_FailRegistration(0, 0);
    EXPECT_EQ(add_function(1), 0);
}

TEST_F(StandInRegistry, EnvironmentsReportAndEvaluate) {
    fm::ExprEnv* environment = FM_ExprEnv_Constructor1(&status);
    fm::Data* result = FM_Data_Constructor1(&status);
    StandIn_SetIdentifiers(0x1'0000'0002, 9);
    EXPECT_EQ(FM_ExprEnv_SessionID(environment, &status), 0x1'0000'0002u);
    EXPECT_EQ(FM_ExprEnv_FileID(environment, &status), 9u);
    EXPECT_EQ(FM_ExprEnv_Evaluate(environment, name, result, &status), 1225);
    StandIn_SetEvaluator(
        [](const fm::ExprEnv*, const fm::Text* expression, fm::Data* into, void* context) {
            fm::Status own;
            const auto* locale = static_cast<const fm::Locale*>(context);
            FM_Data_SetAsText(into, expression, locale, 1, &own);
            return fm::Errcode{77};
        },
        const_cast<fm::Locale*>(FM_Data_GetLocale(result, &status)));
    EXPECT_EQ(FM_ExprEnv_Evaluate(environment, name, result, &status), 77);
    EXPECT_EQ(units(FM_Data_GetAsText(result, &status)), u"Name");
    StandIn_SetEvaluator(nullptr, nullptr);
    FM_Data_Delete(result, &status);
    FM_ExprEnv_Delete(environment, &status);
}

} // namespace
} // namespace vell::test
