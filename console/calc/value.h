// A value of the calculation language, with the host's conversions between its types.
#pragma once

#include "console/model/calendar.h"
#include "console/model/decimal.h"

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vell::console {

// A container value. What is in it belongs to the host layer; the language hands it around.
class Container {
  public:
    virtual ~Container() = default;
    virtual std::u16string file_name() const = 0; // what the container reads as a text
};
using ContainerPtr = std::shared_ptr<const Container>;

struct Date {
    std::int64_t day = 1; // day 1 is 1 January of year 1
};
struct Time {
    Decimal seconds;
};
struct Timestamp {
    Decimal seconds; // day 1 begins at second 0
};

// The order is that of the alternatives in Value.
enum class ValueType : std::uint8_t { Invalid, Text, Number, Date, Time, Timestamp, Container };

// "text", "number" … as it stands in reports and step definitions.
std::string_view type_name(ValueType type);

class Value {
  public:
    Value() : state_(std::u16string()) {}
    Value(std::u16string text) : state_(std::move(text)) {}
    Value(std::u16string_view text) : state_(std::u16string(text)) {}
    Value(const char16_t* text) : state_(std::u16string(text)) {}
    Value(Decimal number) : state_(std::move(number)) {}
    Value(Date date) : state_(date) {}
    Value(Time time) : state_(std::move(time)) {}
    Value(Timestamp timestamp) : state_(std::move(timestamp)) {}
    Value(ContainerPtr container) : state_(std::move(container)) {}

    // What a calculation without an answer yields, such as 1 / 0. It reads "?" and spreads through
    // arithmetic and comparisons.
    static Value invalid();
    static Value boolean(bool value) { return Value(Decimal(value ? 1 : 0)); }

    ValueType type() const { return static_cast<ValueType>(state_.index()); }
    bool is_text() const { return type() == ValueType::Text; }
    bool is_invalid() const { return type() == ValueType::Invalid; }
    bool is_empty() const;

    std::u16string as_text() const&;
    std::u16string as_text() &&;
    Decimal as_number() const; // 0 where there is nothing to read
    bool as_boolean() const;

    // The same value as another type; invalid where a text cannot be read as one. An empty value
    // stays empty, a container stays a container unless a text is asked for.
    Value as_date() const;
    Value as_time() const;
    Value as_timestamp() const;
    Value converted_to(ValueType type) const;

    // Null unless the value has that type.
    const std::u16string* text() const { return std::get_if<std::u16string>(&state_); }
    std::u16string* text() { return std::get_if<std::u16string>(&state_); }
    const Decimal* number() const { return std::get_if<Decimal>(&state_); }
    const Date* date() const { return std::get_if<Date>(&state_); }
    const Time* time() const { return std::get_if<Time>(&state_); }
    const Timestamp* timestamp() const { return std::get_if<Timestamp>(&state_); }
    ContainerPtr container() const;

  private:
    struct Invalid {};

    std::variant<Invalid, std::u16string, Decimal, Date, Time, Timestamp, ContainerPtr> state_;
};

// The host's order of two values; nullopt when one of them is invalid. Texts compare without regard
// to case. A text against a number is read as a number, and against a date or time as such; when it
// cannot be read so, the texts of both are compared.
std::optional<std::strong_ordering> compare(const Value& a, const Value& b);

// True when a number can be read in the text at all.
bool has_digit(std::u16string_view text);

// A date of the years 1 to 4000 or an invalid value.
Value date_from_day(const Decimal& day);

} // namespace vell::console
