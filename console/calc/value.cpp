#include "console/calc/value.h"

#include "console/model/unicode.h"

#include <algorithm>

namespace vell::console {

namespace {

// An instant or number on one scale with the other operand of a comparison.
Decimal comparable(const Value& value, bool as_timestamp) {
    if (as_timestamp && value.date())
        return join_time_stamp(value.date()->day, Decimal());
    return value.as_number();
}

std::strong_ordering compare_with_text(const Value& value, const std::u16string& text) {
    if (text.empty())
        return value.is_empty() ? std::strong_ordering::equal : std::strong_ordering::greater;
    if (value.number()) {
        return has_digit(text) ? *value.number() <=> Decimal::from_any_text(text)
                               : compare_ignoring_case(value.as_text(), text);
    }
    const Value read = Value(text).converted_to(value.type());
    if (read.is_invalid() || value.container())
        return compare_ignoring_case(value.as_text(), text);
    return value.as_number() <=> read.as_number();
}

} // namespace

std::string_view type_name(ValueType type) {
    switch (type) {
    case ValueType::Number:
        return "number";
    case ValueType::Date:
        return "date";
    case ValueType::Time:
        return "time";
    case ValueType::Timestamp:
        return "timestamp";
    case ValueType::Container:
        return "container";
    case ValueType::Invalid: // reads "?"
    case ValueType::Text:
        break;
    }
    return "text";
}

bool has_digit(std::u16string_view text) {
    return std::any_of(text.begin(), text.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

Value date_from_day(const Decimal& day) {
    if (day < Decimal(first_day) || day > Decimal(last_day))
        return Value::invalid();
    return Date{day.to_int64()};
}

Value Value::invalid() {
    Value value;
    value.state_ = Invalid{};
    return value;
}

ContainerPtr Value::container() const {
    const auto* pointer = std::get_if<ContainerPtr>(&state_);
    return pointer ? *pointer : nullptr;
}

bool Value::is_empty() const {
    if (type() == ValueType::Container)
        return container() == nullptr;
    return text() && text()->empty();
}

std::u16string Value::as_text() const& {
    switch (type()) {
    case ValueType::Invalid:
        return u"?";
    case ValueType::Text:
        return *text();
    case ValueType::Number:
        return utf16_from_utf8(number()->to_text());
    case ValueType::Date:
        return utf16_from_utf8(date_text(date()->day));
    case ValueType::Time:
        return utf16_from_utf8(time_text(time()->seconds));
    case ValueType::Timestamp:
        return utf16_from_utf8(time_stamp_text(timestamp()->seconds));
    case ValueType::Container:
        break;
    }
    return container() ? container()->file_name() : std::u16string();
}

std::u16string Value::as_text() && {
    if (text())
        return std::move(*text());
    return static_cast<const Value&>(*this).as_text();
}

Decimal Value::as_number() const {
    switch (type()) {
    case ValueType::Text:
        return Decimal::from_any_text(*text());
    case ValueType::Number:
        return *number();
    case ValueType::Date:
        return Decimal(date()->day);
    case ValueType::Time:
        return time()->seconds;
    case ValueType::Timestamp:
        return timestamp()->seconds;
    case ValueType::Invalid:
    case ValueType::Container:
        break;
    }
    return Decimal();
}

bool Value::as_boolean() const {
    if (type() == ValueType::Container)
        return container() != nullptr;
    return !as_number().is_zero();
}

Value Value::as_date() const {
    if (is_empty() || is_invalid() || date())
        return *this;
    if (text()) {
        if (const auto day = parse_date(*text()))
            return Date{*day};
        const auto seconds = parse_time_stamp(*text());
        return seconds ? Value(Timestamp{*seconds}).as_date() : invalid();
    }
    if (timestamp())
        return date_from_day(Decimal(split_time_stamp(timestamp()->seconds).day));
    return container() ? invalid() : date_from_day(Decimal::truncate(as_number()));
}

Value Value::as_time() const {
    if (is_empty() || is_invalid() || time())
        return *this;
    if (text()) {
        if (const auto seconds = parse_time(*text()))
            return Time{*seconds};
        const auto seconds = parse_time_stamp(*text());
        return seconds ? Value(Timestamp{*seconds}).as_time() : invalid();
    }
    if (timestamp())
        return Time{split_time_stamp(timestamp()->seconds).seconds};
    return container() || date() ? invalid() : Value(Time{as_number()});
}

Value Value::as_timestamp() const {
    if (is_empty() || is_invalid() || timestamp())
        return *this;
    if (text()) {
        const auto seconds = parse_time_stamp(*text());
        return seconds ? Value(Timestamp{*seconds}) : invalid();
    }
    if (date())
        return Timestamp{join_time_stamp(date()->day, Decimal())};
    return container() ? invalid() : Value(Timestamp{as_number()});
}

Value Value::converted_to(ValueType wanted) const {
    switch (wanted) {
    case ValueType::Text:
        return as_text();
    case ValueType::Number:
        if (type() == ValueType::Container || is_invalid())
            return *this;
        return text() && !has_digit(*text()) ? Value() : Value(as_number());
    case ValueType::Date:
        return as_date();
    case ValueType::Time:
        return as_time();
    case ValueType::Timestamp:
        return as_timestamp();
    case ValueType::Invalid:
    case ValueType::Container:
        break;
    }
    return *this;
}

std::optional<std::strong_ordering> compare(const Value& a, const Value& b) {
    if (a.is_invalid() || b.is_invalid())
        return std::nullopt;
    if (a.text() && b.text())
        return compare_ignoring_case(*a.text(), *b.text());
    if (b.text())
        return compare_with_text(a, *b.text());
    if (a.text())
        return 0 <=> compare_with_text(b, *a.text());
    if (a.type() == ValueType::Container || b.type() == ValueType::Container)
        return compare_ignoring_case(a.as_text(), b.as_text());
    const bool instants = a.timestamp() || b.timestamp();
    return comparable(a, instants) <=> comparable(b, instants);
}

} // namespace vell::console
