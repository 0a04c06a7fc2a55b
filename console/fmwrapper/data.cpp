// Data: one value, and the forms that are made of it on demand.
#include "console/fmwrapper/objects.h"

using namespace vell;
using console::checked;
using console::Decimal;
using console::guarded;

namespace {

std::u16string widened(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

template <typename T, typename Make>
const T& made(std::unique_ptr<T>& kept, Make&& make) {
    if (!kept)
        kept = std::make_unique<T>(make());
    return *kept;
}

std::u16string text_of(const fm::Data& data) {
    using Source = fm::Data::Source;
    const auto* moment = std::get_if<fm::DateTime>(&data.value);
    switch (data.source) {
    case Source::Number:
        return widened(std::get<fm::FixPt>(data.value).value.to_text());
    case Source::Date:
        return widened(console::date_text(moment->day));
    case Source::Time:
        return widened(console::time_text(moment->seconds));
    case Source::TimeStamp:
        return widened(
            console::time_stamp_text(console::join_time_stamp(moment->day, moment->seconds)));
    case Source::Binary:
        return console::file_name_list(std::get<fm::BinaryData>(data.value));
    default:
        return {};
    }
}

Decimal number_of(const fm::Data& data) {
    using Source = fm::Data::Source;
    const auto* moment = std::get_if<fm::DateTime>(&data.value);
    switch (data.source) {
    case Source::Text:
        return Decimal::from_any_text(std::get<fm::Text>(data.value).units.get());
    case Source::Date:
        return moment->day;
    case Source::Time:
        return moment->seconds;
    case Source::TimeStamp:
        return console::join_time_stamp(moment->day, moment->seconds);
    default:
        return {};
    }
}

fm::DateTime moment_of_seconds(const Decimal& seconds) {
    const auto parts = console::split_time_stamp(seconds);
    return {parts.day, parts.seconds};
}

// What a text or a number says as a date, a time or a timestamp; a text that says nothing gives the
// first moment of the calendar.
fm::DateTime read_moment(const fm::Data& data, fm::Data::Source wanted) {
    using Source = fm::Data::Source;
    if (const auto* number = std::get_if<fm::FixPt>(&data.value)) {
        if (wanted == Source::Date)
            return {Decimal::floor(number->value).to_int64(), {}};
        if (wanted == Source::Time)
            return {console::first_day, number->value};
        return moment_of_seconds(number->value);
    }
    const auto* text = std::get_if<fm::Text>(&data.value);
    if (text == nullptr)
        return {};
    if (const auto seconds = console::parse_time_stamp(text->units.get()))
        return moment_of_seconds(*seconds);
    if (wanted == Source::Date)
        return {};
    return {console::first_day, console::parse_time(text->units.get()).value_or(Decimal())};
}

// The value as a moment of which only the wanted half is kept.
fm::DateTime moment_of(const fm::Data& data, fm::Data::Source wanted) {
    using Source = fm::Data::Source;
    const auto* moment = std::get_if<fm::DateTime>(&data.value);
    fm::DateTime result = moment != nullptr ? *moment : read_moment(data, wanted);
    if (wanted == Source::Date || data.source == Source::Date)
        result.seconds = Decimal();
    if (wanted == Source::Time || data.source == Source::Time)
        result.day = console::first_day;
    return result;
}

// `value` may be part of what `data` holds or has made, and so is copied before those go.
template <typename T>
void set_value(fm::Data& data, fm::Data::Source source, const T& value, std::int32_t native_type) {
    if (native_type < 0 || native_type > static_cast<std::int32_t>(fm::NativeType::Boolean))
        throw console::BadCall();
    T copy = value;
    data.converted = {};
    data.value = std::move(copy);
    data.source = source;
    data.native_type = static_cast<fm::NativeType>(native_type);
}

} // namespace

namespace vell::fm {

const Text& Data::as_text() const {
    if (source == Source::Text)
        return std::get<Text>(value);
    return made(converted.text, [this] { return Text{text_of(*this), {}}; });
}

const FixPt& Data::as_number() const {
    if (source == Source::Number)
        return std::get<FixPt>(value);
    return made(converted.number, [this] { return FixPt{number_of(*this)}; });
}

const DateTime& Data::as_date() const {
    return made(converted.date, [this] { return moment_of(*this, Source::Date); });
}

const DateTime& Data::as_time() const {
    return made(converted.time, [this] { return moment_of(*this, Source::Time); });
}

const DateTime& Data::as_time_stamp() const {
    return made(converted.time_stamp, [this] { return moment_of(*this, Source::TimeStamp); });
}

const BinaryData& Data::as_binary() const {
    if (source == Source::Binary)
        return std::get<BinaryData>(value);
    return made(converted.binary, [] { return BinaryData(); });
}

} // namespace vell::fm

fm::Data* FM_Data_Constructor1(fm::Status* status) {
    return console::create<fm::Data>(__func__, status);
}

void FM_Data_Delete(fm::Data* self, fm::Status* status) {
    console::destroy(self, status);
}

bool FM_Data_IsEmpty(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] {
        switch (checked(self).source) {
        case fm::Data::Source::None:
            return true;
        case fm::Data::Source::Text:
            return self->as_text().units.get().empty();
        case fm::Data::Source::Binary:
            return self->as_binary().streams.empty();
        default:
            return false;
        }
    });
}

void FM_Data_Clear(fm::Data* self, std::int32_t native_type, fm::Status* status) {
    guarded(__func__, status, [&] {
        set_value(checked(self), fm::Data::Source::None, std::monostate(), native_type);
    });
}

const fm::Text* FM_Data_GetAsText(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_text(); });
}

const fm::FixPt* FM_Data_GetAsNumber(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_number(); });
}

const fm::DateTime* FM_Data_GetAsDate(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_date(); });
}

const fm::DateTime* FM_Data_GetAsTime(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_time(); });
}

const fm::DateTime* FM_Data_GetAsTimeStamp(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_time_stamp(); });
}

const fm::BinaryData* FM_Data_GetBinaryData(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &checked(self).as_binary(); });
}

const fm::Locale* FM_Data_GetLocale(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return &std::as_const(checked(self).locale); });
}

std::int32_t FM_Data_GetNativeType(const fm::Data* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return static_cast<std::int32_t>(checked(self).native_type); });
}

fm::Errcode FM_Data_SetAsText(fm::Data* self, const fm::Text* text, const fm::Locale* locale,
                              std::int32_t native_type, fm::Status* status) {
    return guarded(__func__, status, [&] {
        const fm::Locale kept = checked(locale);
        set_value(checked(self), fm::Data::Source::Text, checked(text), native_type);
        self->locale = kept;
        return number(console::HostError::None);
    });
}

void FM_Data_SetAsNumber(fm::Data* self, const fm::FixPt* number, std::int32_t native_type,
                         fm::Status* status) {
    guarded(__func__, status, [&] {
        set_value(checked(self), fm::Data::Source::Number, checked(number), native_type);
    });
}

void FM_Data_SetAsDate(fm::Data* self, const fm::DateTime* date, std::int32_t native_type,
                       fm::Status* status) {
    guarded(__func__, status,
            [&] { set_value(checked(self), fm::Data::Source::Date, checked(date), native_type); });
}

void FM_Data_SetAsTime(fm::Data* self, const fm::DateTime* time, std::int32_t native_type,
                       fm::Status* status) {
    guarded(__func__, status,
            [&] { set_value(checked(self), fm::Data::Source::Time, checked(time), native_type); });
}

void FM_Data_SetAsTimeStamp(fm::Data* self, const fm::DateTime* time_stamp,
                            std::int32_t native_type, fm::Status* status) {
    guarded(__func__, status, [&] {
        set_value(checked(self), fm::Data::Source::TimeStamp, checked(time_stamp), native_type);
    });
}

// Unless it is forced to the binary type, a value that has a type already keeps it.
void FM_Data_SetBinaryData(fm::Data* self, const fm::BinaryData* binary,
                           bool force_binary_native_type, fm::Status* status) {
    guarded(__func__, status, [&] {
        const fm::NativeType before = checked(self).native_type;
        const bool forced = force_binary_native_type || before == fm::NativeType::Invalid;
        const auto native_type = forced ? fm::NativeType::Binary : before;
        set_value(*self, fm::Data::Source::Binary, checked(binary),
                  static_cast<std::int32_t>(native_type));
    });
}
