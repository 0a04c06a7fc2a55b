// The host's C interface, as FMWrapper.dll exports it to a 64-bit Windows plug-in.
//
// Objects are opaque: only the host allocates and frees them. Every call but FM_Color_White and
// FM_Color_Black takes as its last argument a status word that the caller initialises and the host
// fills in. Positions and sizes of text count UTF-16 code units.
//
// The plug-in includes this header to call the host; the stand-in FMWrapper.dll of the console host
// includes it with VELL_FM_EXPORT to define the same functions. Nothing outside src/host and
// console may include it.
#pragma once

#include <cstdint>

#if defined(VELL_FM_EXPORT)
#define FM_CALL extern "C" __declspec(dllexport)
#else
#define FM_CALL extern "C" __declspec(dllimport)
#endif

namespace vell::fm {

struct Text;
struct Data;
struct DataVect;
struct BinaryData;
struct DateTime;
struct FixPt;
struct QuadChar;
struct Locale;
struct CharacterStyle;
struct Color;
struct ExprEnv;

using Errcode = std::int16_t;
using PtrType = std::uint64_t;

enum class StatusCode : std::int32_t { Ok = 0, AllocationFailure = 1, UnknownFailure = 2 };

struct Status {
    std::int32_t version = 1;
    std::int32_t code = 0; // a StatusCode, written by the host
};
static_assert(sizeof(Status) == 8);

// A "size" that reaches to the end of a text, and the position that a search returns for "absent".
inline constexpr std::uint32_t to_end = 0xFFFFFFFF;
inline constexpr std::uint32_t not_found = 0xFFFFFFFF;

enum class NativeType : std::int32_t {
    Invalid = 0,
    Text = 1,
    Number = 2,
    Date = 3,
    Time = 4,
    TimeStamp = 5,
    Binary = 6,
    Boolean = 7,
};

enum class LocaleType : std::int32_t { None = 0, System = 1, RawUnicode = 2, StandardUnicode = 3 };

// The signature shared by the bodies of external functions and script steps.
using ExternalBody = Errcode (*)(std::int16_t function_id, const ExprEnv* environment,
                                 const DataVect* parameters, Data* result);

enum class PathFormat : std::int32_t { Posix = 1, Windows = 2, Url = 3 };

// Faces of a CharacterStyle, as bits.
inline constexpr std::uint16_t face_plain = 0;
inline constexpr std::uint16_t face_bold = 256;
inline constexpr std::uint16_t face_italic = 512;
inline constexpr std::uint16_t face_underline = 1024;

} // namespace vell::fm

// Environment -------------------------------------------------------------------------------------

FM_CALL vell::fm::Errcode FM_ExprEnv_RegisterExternalFunction(
    const vell::fm::QuadChar* plugin_id, std::int16_t function_id, const vell::fm::Text* name,
    const vell::fm::Text* prototype, std::int16_t min_args, std::int16_t max_args,
    std::uint32_t flags, vell::fm::ExternalBody body, vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_ExprEnv_UnRegisterExternalFunction(const vell::fm::QuadChar* plugin_id,
                                                                std::int16_t function_id,
                                                                vell::fm::Status* status);

// API 56 and later: looked up by name.
FM_CALL vell::fm::Errcode
FM_ExprEnv_RegisterExternalFunctionEx(const vell::fm::QuadChar* plugin_id, std::int16_t function_id,
                                      const vell::fm::Text* name, const vell::fm::Text* prototype,
                                      const vell::fm::Text* description, std::int16_t min_args,
                                      std::int16_t max_args, std::uint32_t flags,
                                      vell::fm::ExternalBody body, vell::fm::Status* status);
FM_CALL vell::fm::PtrType FM_ExprEnv_SessionID(const vell::fm::ExprEnv* self,
                                               vell::fm::Status* status);
FM_CALL vell::fm::PtrType FM_ExprEnv_FileID(const vell::fm::ExprEnv* self,
                                            vell::fm::Status* status);

// API 57 and later: looked up by name.
FM_CALL vell::fm::Errcode
FM_ExprEnv_RegisterScriptStep(const vell::fm::QuadChar* plugin_id, std::int16_t step_id,
                              const vell::fm::Text* name, const vell::fm::Text* definition,
                              const vell::fm::Text* description, std::uint32_t flags,
                              vell::fm::ExternalBody body, vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_ExprEnv_UnRegisterScriptStep(const vell::fm::QuadChar* plugin_id,
                                                          std::int16_t step_id,
                                                          vell::fm::Status* status);

FM_CALL vell::fm::ExprEnv* FM_ExprEnv_Constructor1(vell::fm::Status* status);
FM_CALL void FM_ExprEnv_Delete(vell::fm::ExprEnv* self, vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_ExprEnv_Evaluate(const vell::fm::ExprEnv* self,
                                              const vell::fm::Text* expression,
                                              vell::fm::Data* result, vell::fm::Status* status);

// Text --------------------------------------------------------------------------------------------

FM_CALL vell::fm::Text* FM_Text_Constructor1(vell::fm::Status* status);
FM_CALL void FM_Text_Delete(vell::fm::Text* self, vell::fm::Status* status);
FM_CALL std::uint32_t FM_Text_GetSize(const vell::fm::Text* self, vell::fm::Status* status);
FM_CALL void FM_Text_Assign(vell::fm::Text* self, const char* bytes, std::int32_t encoding,
                            vell::fm::Status* status);
FM_CALL void FM_Text_AssignWithLength(vell::fm::Text* self, const char* bytes, std::uint32_t length,
                                      std::int32_t encoding, vell::fm::Status* status);
FM_CALL void FM_Text_AssignUnicode(vell::fm::Text* self, const char16_t* units,
                                   vell::fm::Status* status);
FM_CALL void FM_Text_AssignUnicodeWithLength(vell::fm::Text* self, const char16_t* units,
                                             std::uint32_t length, vell::fm::Status* status);
FM_CALL void FM_Text_GetBytes(const vell::fm::Text* self, char* buffer, std::uint32_t buffer_size,
                              std::uint32_t position, std::uint32_t size, std::int32_t encoding,
                              vell::fm::Status* status);
FM_CALL void FM_Text_GetUnicode(const vell::fm::Text* self, char16_t* buffer,
                                std::uint32_t position, std::uint32_t size,
                                vell::fm::Status* status);
FM_CALL void FM_Text_SetText(vell::fm::Text* self, const vell::fm::Text* other,
                             std::uint32_t position, std::uint32_t size, vell::fm::Status* status);
FM_CALL void FM_Text_AppendText(vell::fm::Text* self, const vell::fm::Text* other,
                                std::uint32_t position, std::uint32_t size,
                                vell::fm::Status* status);
FM_CALL void FM_Text_InsertText(vell::fm::Text* self, const vell::fm::Text* other,
                                std::uint32_t position, vell::fm::Status* status);
FM_CALL void FM_Text_DeleteText(vell::fm::Text* self, std::uint32_t position, std::uint32_t size,
                                vell::fm::Status* status);
FM_CALL std::uint32_t FM_Text_Find(const vell::fm::Text* self, const vell::fm::Text* other,
                                   std::uint32_t position, vell::fm::Status* status);
FM_CALL std::uint32_t FM_Text_FindIgnoringCase(const vell::fm::Text* self,
                                               const vell::fm::Text* other, std::uint32_t position,
                                               vell::fm::Status* status);
FM_CALL void FM_Text_GetStyle(const vell::fm::Text* self, vell::fm::CharacterStyle* style,
                              std::uint32_t position, vell::fm::Status* status);
FM_CALL void FM_Text_SetStyle(vell::fm::Text* self, const vell::fm::CharacterStyle* style,
                              std::uint32_t position, std::uint32_t size, vell::fm::Status* status);

// Data and data vector ----------------------------------------------------------------------------

FM_CALL vell::fm::Data* FM_Data_Constructor1(vell::fm::Status* status);
FM_CALL void FM_Data_Delete(vell::fm::Data* self, vell::fm::Status* status);
FM_CALL bool FM_Data_IsEmpty(const vell::fm::Data* self, vell::fm::Status* status);
FM_CALL void FM_Data_Clear(vell::fm::Data* self, std::int32_t native_type,
                           vell::fm::Status* status);
FM_CALL const vell::fm::Text* FM_Data_GetAsText(const vell::fm::Data* self,
                                                vell::fm::Status* status);
FM_CALL const vell::fm::FixPt* FM_Data_GetAsNumber(const vell::fm::Data* self,
                                                   vell::fm::Status* status);
FM_CALL const vell::fm::DateTime* FM_Data_GetAsDate(const vell::fm::Data* self,
                                                    vell::fm::Status* status);
FM_CALL const vell::fm::DateTime* FM_Data_GetAsTime(const vell::fm::Data* self,
                                                    vell::fm::Status* status);
FM_CALL const vell::fm::DateTime* FM_Data_GetAsTimeStamp(const vell::fm::Data* self,
                                                         vell::fm::Status* status);
FM_CALL const vell::fm::BinaryData* FM_Data_GetBinaryData(const vell::fm::Data* self,
                                                          vell::fm::Status* status);
FM_CALL const vell::fm::Locale* FM_Data_GetLocale(const vell::fm::Data* self,
                                                  vell::fm::Status* status);
FM_CALL std::int32_t FM_Data_GetNativeType(const vell::fm::Data* self, vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_Data_SetAsText(vell::fm::Data* self, const vell::fm::Text* text,
                                            const vell::fm::Locale* locale,
                                            std::int32_t native_type, vell::fm::Status* status);
FM_CALL void FM_Data_SetAsNumber(vell::fm::Data* self, const vell::fm::FixPt* number,
                                 std::int32_t native_type, vell::fm::Status* status);
FM_CALL void FM_Data_SetAsDate(vell::fm::Data* self, const vell::fm::DateTime* date,
                               std::int32_t native_type, vell::fm::Status* status);
FM_CALL void FM_Data_SetAsTime(vell::fm::Data* self, const vell::fm::DateTime* time,
                               std::int32_t native_type, vell::fm::Status* status);
FM_CALL void FM_Data_SetAsTimeStamp(vell::fm::Data* self, const vell::fm::DateTime* time_stamp,
                                    std::int32_t native_type, vell::fm::Status* status);
FM_CALL void FM_Data_SetBinaryData(vell::fm::Data* self, const vell::fm::BinaryData* binary,
                                   bool force_binary_native_type, vell::fm::Status* status);

FM_CALL vell::fm::DataVect* FM_DataVect_Constructor1(vell::fm::Status* status);
FM_CALL void FM_DataVect_Delete(vell::fm::DataVect* self, vell::fm::Status* status);
FM_CALL std::uint32_t FM_DataVect_Size(const vell::fm::DataVect* self, vell::fm::Status* status);
FM_CALL void FM_DataVect_PushBack(vell::fm::DataVect* self, const vell::fm::Data* data,
                                  vell::fm::Status* status);
FM_CALL const vell::fm::Data* FM_DataVect_At(const vell::fm::DataVect* self, std::uint32_t position,
                                             vell::fm::Status* status);
FM_CALL const vell::fm::Text* FM_DataVect_AtAsText(const vell::fm::DataVect* self,
                                                   std::uint32_t position,
                                                   vell::fm::Status* status);
FM_CALL const vell::fm::FixPt* FM_DataVect_AtAsNumber(const vell::fm::DataVect* self,
                                                      std::uint32_t position,
                                                      vell::fm::Status* status);
FM_CALL const vell::fm::DateTime* FM_DataVect_AtAsTimeStamp(const vell::fm::DataVect* self,
                                                            std::uint32_t position,
                                                            vell::fm::Status* status);
FM_CALL const vell::fm::BinaryData* FM_DataVect_AtAsBinaryData(const vell::fm::DataVect* self,
                                                               std::uint32_t position,
                                                               vell::fm::Status* status);

// Container values --------------------------------------------------------------------------------

FM_CALL vell::fm::BinaryData* FM_BinaryData_Constructor1(vell::fm::Status* status);
FM_CALL vell::fm::BinaryData* FM_BinaryData_Constructor2(const vell::fm::BinaryData* source,
                                                         vell::fm::Status* status);
FM_CALL void FM_BinaryData_Delete(vell::fm::BinaryData* self, vell::fm::Status* status);
FM_CALL vell::fm::BinaryData* FM_BinaryData_operatorAS(vell::fm::BinaryData* self,
                                                       const vell::fm::BinaryData* source,
                                                       vell::fm::Status* status);
FM_CALL std::int32_t FM_BinaryData_GetCount(const vell::fm::BinaryData* self,
                                            vell::fm::Status* status);
FM_CALL std::int32_t FM_BinaryData_GetIndex(const vell::fm::BinaryData* self,
                                            const vell::fm::QuadChar* type,
                                            vell::fm::Status* status);
FM_CALL void FM_BinaryData_GetType(const vell::fm::BinaryData* self, std::int32_t index,
                                   vell::fm::QuadChar* type, vell::fm::Status* status);
FM_CALL std::uint32_t FM_BinaryData_GetSize(const vell::fm::BinaryData* self, std::int32_t index,
                                            vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_BinaryData_GetData(const vell::fm::BinaryData* self,
                                                std::int32_t index, std::uint32_t offset,
                                                std::uint32_t amount, void* buffer,
                                                vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_BinaryData_Add(vell::fm::BinaryData* self,
                                            const vell::fm::QuadChar* type, std::uint32_t amount,
                                            const void* buffer, vell::fm::Status* status);

// API 51 and later: looked up by name.
FM_CALL vell::fm::Errcode FM_BinaryData_GetFNAMData(const vell::fm::BinaryData* self,
                                                    vell::fm::Text* file_path_list,
                                                    vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_BinaryData_AddFNAMData(vell::fm::BinaryData* self,
                                                    const vell::fm::Text* file_path_list,
                                                    vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_BinaryData_GetSIZEData(const vell::fm::BinaryData* self,
                                                    std::int16_t* width, std::int16_t* height,
                                                    vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_BinaryData_AddSIZEData(vell::fm::BinaryData* self, std::int16_t width,
                                                    std::int16_t height, vell::fm::Status* status);

// Date and time -----------------------------------------------------------------------------------

FM_CALL vell::fm::DateTime* FM_DateTime_Constructor1(vell::fm::Status* status);
FM_CALL void FM_DateTime_Delete(vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int16_t FM_DateTime_GetYear(const vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int16_t FM_DateTime_GetMonth(const vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int16_t FM_DateTime_GetDay(const vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int32_t FM_DateTime_GetHour(const vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int16_t FM_DateTime_GetMinute(const vell::fm::DateTime* self,
                                           vell::fm::Status* status);
FM_CALL std::int16_t FM_DateTime_GetSec(const vell::fm::DateTime* self, vell::fm::Status* status);
FM_CALL std::int32_t FM_DateTime_GetDaysSinceEpoch(const vell::fm::DateTime* self,
                                                   vell::fm::Status* status);
FM_CALL void FM_DateTime_GetSecsSinceMidnight(const vell::fm::DateTime* self,
                                              vell::fm::FixPt* result, vell::fm::Status* status);
FM_CALL void FM_DateTime_GetSecondsSinceEpoch(const vell::fm::DateTime* self,
                                              vell::fm::FixPt* result, vell::fm::Status* status);
FM_CALL void FM_DateTime_SetDate(vell::fm::DateTime* self, const vell::fm::DateTime* other,
                                 vell::fm::Status* status);
FM_CALL void FM_DateTime_SetTime(vell::fm::DateTime* self, const vell::fm::DateTime* other,
                                 vell::fm::Status* status);
FM_CALL void FM_DateTime_SetDaysSinceEpoch(vell::fm::DateTime* self, std::int64_t days,
                                           vell::fm::Status* status);
FM_CALL void FM_DateTime_SetSecsSinceMidnight(vell::fm::DateTime* self,
                                              const vell::fm::FixPt* seconds,
                                              vell::fm::Status* status);
FM_CALL void FM_DateTime_SetSecondsSinceEpoch(vell::fm::DateTime* self,
                                              const vell::fm::FixPt* seconds,
                                              vell::fm::Status* status);

// Fixed point -------------------------------------------------------------------------------------

FM_CALL vell::fm::FixPt* FM_FixPt_Constructor1(std::int32_t value, int precision,
                                               vell::fm::Status* status);
FM_CALL void FM_FixPt_Delete(vell::fm::FixPt* self, vell::fm::Status* status);
FM_CALL void FM_FixPt_AssignInt(vell::fm::FixPt* self, std::int32_t value,
                                vell::fm::Status* status);
FM_CALL void FM_FixPt_AssignDouble(vell::fm::FixPt* self, double value, vell::fm::Status* status);
FM_CALL void FM_FixPt_AssignFixPt(vell::fm::FixPt* self, const vell::fm::FixPt* value,
                                  vell::fm::Status* status);
FM_CALL std::int32_t FM_FixPt_AsLong(const vell::fm::FixPt* self, vell::fm::Status* status);
FM_CALL double FM_FixPt_AsFloat(const vell::fm::FixPt* self, vell::fm::Status* status);
FM_CALL void FM_FixPt_Add(const vell::fm::FixPt* self, const vell::fm::FixPt* argument,
                          vell::fm::FixPt* result, vell::fm::Status* status);
FM_CALL void FM_FixPt_Subtract(const vell::fm::FixPt* self, const vell::fm::FixPt* argument,
                               vell::fm::FixPt* result, vell::fm::Status* status);
FM_CALL void FM_FixPt_Multiply(const vell::fm::FixPt* self, const vell::fm::FixPt* argument,
                               vell::fm::FixPt* result, vell::fm::Status* status);
FM_CALL vell::fm::Errcode FM_FixPt_Divide(const vell::fm::FixPt* self,
                                          const vell::fm::FixPt* argument, vell::fm::FixPt* result,
                                          vell::fm::Status* status);
FM_CALL void FM_FixPt_Negate(vell::fm::FixPt* self, vell::fm::Status* status);
FM_CALL void FM_FixPt_Increment(vell::fm::FixPt* self, std::int32_t value,
                                vell::fm::Status* status);
FM_CALL void FM_FixPt_Decrement(vell::fm::FixPt* self, std::int32_t value,
                                vell::fm::Status* status);
FM_CALL bool FM_FixPt_operatorEQ(const vell::fm::FixPt* self, const vell::fm::FixPt* other,
                                 vell::fm::Status* status);
FM_CALL bool FM_FixPt_operatorGT(const vell::fm::FixPt* self, const vell::fm::FixPt* other,
                                 vell::fm::Status* status);
FM_CALL bool FM_FixPt_operatorLT(const vell::fm::FixPt* self, const vell::fm::FixPt* other,
                                 vell::fm::Status* status);

// API 59 and later: looked up by name.
FM_CALL void FM_FixPt_AssignInt64(vell::fm::FixPt* self, std::int64_t value,
                                  vell::fm::Status* status);
FM_CALL std::int64_t FM_FixPt_AsLong64(const vell::fm::FixPt* self, vell::fm::Status* status);

// Four-character code, locale, style, colour ------------------------------------------------------

FM_CALL vell::fm::QuadChar* FM_QuadChar_Constructor1(vell::fm::Status* status);
FM_CALL vell::fm::QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3,
                                                     vell::fm::Status* status);
FM_CALL void FM_QuadChar_Delete(vell::fm::QuadChar* self, vell::fm::Status* status);
FM_CALL std::uint32_t FM_QuadChar_GetMacType(const vell::fm::QuadChar* self,
                                             vell::fm::Status* status);
FM_CALL void FM_QuadChar_SetMacType(vell::fm::QuadChar* self, std::uint32_t type,
                                    vell::fm::Status* status);

FM_CALL vell::fm::Locale* FM_Locale_Constructor1(std::int32_t type, vell::fm::Status* status);
FM_CALL void FM_Locale_Delete(vell::fm::Locale* self, vell::fm::Status* status);

FM_CALL vell::fm::CharacterStyle* FM_CharacterStyle_Constructor1(vell::fm::Status* status);
FM_CALL void FM_CharacterStyle_Delete(vell::fm::CharacterStyle* self, vell::fm::Status* status);
FM_CALL void FM_CharacterStyle_SetFace(vell::fm::CharacterStyle* self, std::uint16_t face,
                                       vell::fm::Status* status);
FM_CALL std::uint16_t FM_CharacterStyle_GetFace(const vell::fm::CharacterStyle* self,
                                                vell::fm::Status* status);
FM_CALL void FM_CharacterStyle_SetColor(vell::fm::CharacterStyle* self,
                                        const vell::fm::Color* color, vell::fm::Status* status);
FM_CALL const vell::fm::Color* FM_CharacterStyle_GetColor(const vell::fm::CharacterStyle* self,
                                                          vell::fm::Status* status);
FM_CALL bool FM_CharacterStyle_IsColorEnabled(const vell::fm::CharacterStyle* self,
                                              vell::fm::Status* status);

FM_CALL vell::fm::Color* FM_Color_Constructor2(std::uint8_t red, std::uint8_t green,
                                               std::uint8_t blue, std::uint8_t alpha,
                                               vell::fm::Status* status);
FM_CALL void FM_Color_Delete(vell::fm::Color* self, vell::fm::Status* status);
FM_CALL std::uint8_t FM_Color_GetRed(const vell::fm::Color* self, vell::fm::Status* status);
FM_CALL std::uint8_t FM_Color_GetGreen(const vell::fm::Color* self, vell::fm::Status* status);
FM_CALL std::uint8_t FM_Color_GetBlue(const vell::fm::Color* self, vell::fm::Status* status);
FM_CALL std::uint8_t FM_Color_GetAlpha(const vell::fm::Color* self, vell::fm::Status* status);
