#include "src/host/bridge/host_data.h"

namespace vell::host {
namespace {

constexpr std::int32_t native(fm::NativeType type) {
    return static_cast<std::int32_t>(type);
}

} // namespace

Data::Data() : HostObject(host_call(FM_Data_Constructor1)) {}

fm::NativeType native_type(const fm::Data* data) {
    return static_cast<fm::NativeType>(host_call(FM_Data_GetNativeType, data));
}

const fm::Text* text_of(const fm::Data* data) {
    return host_call(FM_Data_GetAsText, data);
}

ParameterVector::ParameterVector(const fm::DataVect* vector)
    : vector_(vector), size_(host_call(FM_DataVect_Size, vector)) {}

const fm::Data* ParameterVector::at(std::uint32_t position) const {
    return host_call(FM_DataVect_At, vector_, position);
}
const fm::Text* ParameterVector::text(std::uint32_t position) const {
    return host_call(FM_DataVect_AtAsText, vector_, position);
}
const fm::FixPt* ParameterVector::number(std::uint32_t position) const {
    return host_call(FM_DataVect_AtAsNumber, vector_, position);
}
const fm::DateTime* ParameterVector::time_stamp(std::uint32_t position) const {
    return host_call(FM_DataVect_AtAsTimeStamp, vector_, position);
}
const fm::BinaryData* ParameterVector::container(std::uint32_t position) const {
    return host_call(FM_DataVect_AtAsBinaryData, vector_, position);
}

void store_text(fm::Data* target, const Text& text) {
    host_call_or_throw(FM_Data_SetAsText, target, text.get(), host_call(FM_Data_GetLocale, target),
                       native(fm::NativeType::Text));
}

void store_number(fm::Data* target, const Number& number) {
    host_call(FM_Data_SetAsNumber, target, number.get(), native(fm::NativeType::Number));
}

void store_date(fm::Data* target, const DateTime& date) {
    host_call(FM_Data_SetAsDate, target, date.get(), native(fm::NativeType::Date));
}

void store_time(fm::Data* target, const DateTime& time) {
    host_call(FM_Data_SetAsTime, target, time.get(), native(fm::NativeType::Time));
}

void store_time_stamp(fm::Data* target, const DateTime& time_stamp) {
    host_call(FM_Data_SetAsTimeStamp, target, time_stamp.get(), native(fm::NativeType::TimeStamp));
}

void store_container(fm::Data* target, const Container& container) {
    constexpr bool as_binary = true;
    host_call(FM_Data_SetBinaryData, target, container.get(), as_binary);
}

} // namespace vell::host
