#include "console/host/host_objects.h"

#include <utility>

namespace vell::console {

namespace {

// Makes an object with a constructor of the host that takes nothing but the status.
template <typename T>
HostObject<T> construct(T* (*constructor)(fm::Status*)) {
    CallStatus status;
    HostObject<T> object(constructor(status));
    status.check();
    return object;
}

HostObject<fm::Locale> system_locale() {
    CallStatus status;
    HostObject<fm::Locale> locale(
        FM_Locale_Constructor1(static_cast<std::int32_t>(fm::LocaleType::System), status));
    status.check();
    return locale;
}

void assign_text(fm::Data* data, std::u16string_view value) {
    const HostText text = make_text(value);
    const auto locale = system_locale();
    CallStatus status;
    FM_Data_SetAsText(data, text.get(), locale.get(), static_cast<int>(fm::NativeType::Text),
                      status);
    status.check();
}

// A number reaches the host as its text, which carries every digit. The result belongs to `holder`.
const fm::FixPt* number_in(fm::Data* holder, const Decimal& number) {
    const std::string digits = number.to_text();
    assign_text(holder, std::u16string(digits.begin(), digits.end()));
    CallStatus status;
    const fm::FixPt* result = FM_Data_GetAsNumber(holder, status);
    status.check();
    return result;
}

void assign_number(fm::Data* data, const Decimal& number) {
    const HostData holder = make_data();
    const fm::FixPt* fixed = number_in(holder.get(), number);
    CallStatus status;
    FM_Data_SetAsNumber(data, fixed, static_cast<int>(fm::NativeType::Number), status);
    status.check();
}

void assign_date(fm::Data* data, const Date& date) {
    const auto moment = construct(FM_DateTime_Constructor1);
    CallStatus status;
    FM_DateTime_SetDaysSinceEpoch(moment.get(), date.day, status);
    status.check();
    FM_Data_SetAsDate(data, moment.get(), static_cast<int>(fm::NativeType::Date), status);
    status.check();
}

void assign_time(fm::Data* data, const Time& time) {
    const HostData holder = make_data();
    const auto moment = construct(FM_DateTime_Constructor1);
    CallStatus status;
    FM_DateTime_SetSecsSinceMidnight(moment.get(), number_in(holder.get(), time.seconds), status);
    status.check();
    FM_Data_SetAsTime(data, moment.get(), static_cast<int>(fm::NativeType::Time), status);
    status.check();
}

void assign_timestamp(fm::Data* data, const Timestamp& timestamp) {
    const HostData holder = make_data();
    const auto moment = construct(FM_DateTime_Constructor1);
    CallStatus status;
    FM_DateTime_SetSecondsSinceEpoch(moment.get(), number_in(holder.get(), timestamp.seconds),
                                     status);
    status.check();
    FM_Data_SetAsTimeStamp(data, moment.get(), static_cast<int>(fm::NativeType::TimeStamp), status);
    status.check();
}

void assign_container(fm::Data* data, const ContainerPtr& container) {
    const auto* held = dynamic_cast<const HostContainer*>(container.get());
    if (!held)
        return;
    CallStatus status;
    FM_Data_SetBinaryData(data, held->get(), true, status);
    status.check();
}

Decimal number_of(const fm::Data* data) {
    CallStatus status;
    const fm::Text* text = FM_Data_GetAsText(data, status);
    status.check();
    return Decimal::from_any_text(text_of(text));
}

// Seconds of a moment, as one of the host's calls puts them into a fixed-point number.
Decimal seconds_of(const fm::DateTime* moment,
                   void (*read)(const fm::DateTime*, fm::FixPt*, fm::Status*)) {
    constexpr int precision = 16;
    CallStatus status;
    const HostObject<fm::FixPt> seconds(FM_FixPt_Constructor1(0, precision, status));
    status.check();
    read(moment, seconds.get(), status);
    status.check();
    const HostData holder = make_data();
    FM_Data_SetAsNumber(holder.get(), seconds.get(), static_cast<int>(fm::NativeType::Number),
                        status);
    status.check();
    return number_of(holder.get());
}

Value date_of(const fm::Data* data) {
    CallStatus status;
    const fm::DateTime* moment = FM_Data_GetAsDate(data, status);
    status.check();
    const Date date{FM_DateTime_GetDaysSinceEpoch(moment, status)};
    status.check();
    return date;
}

Value time_of(const fm::Data* data) {
    CallStatus status;
    const fm::DateTime* moment = FM_Data_GetAsTime(data, status);
    status.check();
    return Time{seconds_of(moment, [](const fm::DateTime* self, fm::FixPt* out, fm::Status* st) {
        FM_DateTime_GetSecsSinceMidnight(self, out, st);
    })};
}

Value timestamp_of(const fm::Data* data) {
    CallStatus status;
    const fm::DateTime* moment = FM_Data_GetAsTimeStamp(data, status);
    status.check();
    return Timestamp{
        seconds_of(moment, [](const fm::DateTime* self, fm::FixPt* out, fm::Status* st) {
            FM_DateTime_GetSecondsSinceEpoch(self, out, st);
        })};
}

Value container_of(const fm::Data* data) {
    CallStatus status;
    const fm::BinaryData* binary = FM_Data_GetBinaryData(data, status);
    status.check();
    return ContainerPtr(std::make_shared<HostContainer>(binary));
}

} // namespace

void CallStatus::check() const {
    if (status_.code != 0)
        throw HostCallError(status_.code == static_cast<int>(fm::StatusCode::AllocationFailure)
                                ? "the host library is out of memory"
                                : "the host library reported a failure");
}

// A failing delete leaves nothing to be done.
void HostObjectDeleter::operator()(fm::Text* object) const {
    FM_Text_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::Data* object) const {
    FM_Data_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::DataVect* object) const {
    FM_DataVect_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::BinaryData* object) const {
    FM_BinaryData_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::DateTime* object) const {
    FM_DateTime_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::FixPt* object) const {
    FM_FixPt_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::QuadChar* object) const {
    FM_QuadChar_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::Locale* object) const {
    FM_Locale_Delete(object, CallStatus());
}
void HostObjectDeleter::operator()(fm::ExprEnv* object) const {
    FM_ExprEnv_Delete(object, CallStatus());
}

HostText make_text(std::u16string_view text) {
    HostText object = construct(FM_Text_Constructor1);
    CallStatus status;
    FM_Text_AssignUnicodeWithLength(object.get(), text.data(),
                                    static_cast<std::uint32_t>(text.size()), status);
    status.check();
    return object;
}

HostData make_data() {
    return construct(FM_Data_Constructor1);
}
HostDataVector make_data_vector() {
    return construct(FM_DataVect_Constructor1);
}
HostBinaryData make_binary_data() {
    return construct(FM_BinaryData_Constructor1);
}
HostEnvironment make_environment() {
    return construct(FM_ExprEnv_Constructor1);
}

HostQuadChar make_quad_char(std::string_view four) {
    CallStatus status;
    HostQuadChar object(FM_QuadChar_Constructor2(four[0], four[1], four[2], four[3], status));
    status.check();
    return object;
}

std::u16string text_of(const fm::Text* text) {
    CallStatus status;
    std::u16string units(FM_Text_GetSize(text, status), u'\0');
    status.check();
    FM_Text_GetUnicode(text, units.data(), 0, static_cast<std::uint32_t>(units.size()), status);
    status.check();
    return units;
}

void assign(fm::Data* data, const Value& value) {
    switch (value.type()) {
    case ValueType::Number:
        return assign_number(data, *value.number());
    case ValueType::Date:
        return assign_date(data, *value.date());
    case ValueType::Time:
        return assign_time(data, *value.time());
    case ValueType::Timestamp:
        return assign_timestamp(data, *value.timestamp());
    case ValueType::Container:
        return assign_container(data, value.container());
    case ValueType::Invalid:
    case ValueType::Text:
        break;
    }
    assign_text(data, value.text() ? *value.text() : value.as_text());
}

HostData to_data(const Value& value) {
    HostData data = make_data();
    assign(data.get(), value);
    return data;
}

Value to_value(const fm::Data* data) {
    CallStatus status;
    const auto type = static_cast<fm::NativeType>(FM_Data_GetNativeType(data, status));
    status.check();
    const bool empty = FM_Data_IsEmpty(data, status);
    status.check();
    if (empty)
        return Value();
    switch (type) {
    case fm::NativeType::Number:
    case fm::NativeType::Boolean:
        return number_of(data);
    case fm::NativeType::Date:
        return date_of(data);
    case fm::NativeType::Time:
        return time_of(data);
    case fm::NativeType::TimeStamp:
        return timestamp_of(data);
    case fm::NativeType::Binary:
        return container_of(data);
    case fm::NativeType::Invalid:
    case fm::NativeType::Text:
        break;
    }
    const fm::Text* text = FM_Data_GetAsText(data, status);
    status.check();
    return text_of(text);
}

HostContainer::HostContainer(const fm::BinaryData* source) {
    CallStatus status;
    data_.reset(FM_BinaryData_Constructor2(source, status));
    status.check();
}

std::u16string HostContainer::file_name() const {
    const HostText list = make_text({});
    CallStatus status;
    if (FM_BinaryData_GetFNAMData(get(), list.get(), status) != 0)
        return {};
    status.check();
    // The first line; behind its last slash stands the name.
    std::u16string name = text_of(list.get());
    name.erase(std::min(name.size(), name.find_first_of(u"\r\n")));
    return name.substr(name.find_last_of(u"/:") + 1);
}

} // namespace vell::console
