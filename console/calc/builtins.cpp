#include "console/calc/builtins.h"

#include "console/model/unicode.h"

#include <algorithm>
#include <array>

namespace vell::console {

namespace {

using Arguments = std::span<Value>;

std::u16string text(Arguments arguments, std::size_t index) {
    return std::move(arguments[index]).as_text();
}

// A count or position: the number without its fraction, kept in a range where sums cannot overflow.
std::int64_t whole(const Value& value) {
    constexpr std::int64_t limit = 1'000'000'000'000;
    return std::clamp(value.as_number().to_int64(), -limit, limit);
}

bool any_invalid(Arguments arguments) {
    return std::any_of(arguments.begin(), arguments.end(),
                       [](const Value& value) { return value.is_invalid(); });
}

// Dates and times -----------------------------------------------------------------------------

Value date(Arguments arguments) {
    const std::int64_t year = whole(arguments[2]);
    constexpr std::int64_t carry_limit =
        2'000'000; // no month or day beyond it ends in a valid year
    const std::int64_t month = std::clamp(whole(arguments[0]), -carry_limit, carry_limit);
    const std::int64_t day = std::clamp(whole(arguments[1]), -carry_limit, carry_limit);
    if (any_invalid(arguments) || year < 1 || year > 4000)
        return Value::invalid();
    return date_from_day(Decimal(day_number(year, month, day)));
}

Value time(Arguments arguments) {
    if (any_invalid(arguments))
        return Value::invalid();
    return Time{arguments[0].as_number() * Decimal(3600) + arguments[1].as_number() * Decimal(60) +
                arguments[2].as_number()};
}

Value timestamp(Arguments arguments) {
    const Value day = arguments[0].as_date();
    const Value seconds = arguments[1].as_time();
    if (!day.date() || seconds.is_invalid())
        return Value::invalid();
    return Timestamp{join_time_stamp(day.date()->day, seconds.as_number())};
}

Value as_date(Arguments arguments) {
    return arguments[0].as_date();
}
Value as_time(Arguments arguments) {
    return arguments[0].as_time();
}
Value as_timestamp(Arguments arguments) {
    return arguments[0].as_timestamp();
}
Value as_number(Arguments arguments) {
    return arguments[0].converted_to(ValueType::Number);
}
Value as_text(Arguments arguments) {
    return text(arguments, 0);
}

// Texts ---------------------------------------------------------------------------------------

constexpr std::int64_t digits_per_character = 100'000;

// Each group of five digits, from the right, is one character.
Value character(Arguments arguments) {
    const Decimal group_size(digits_per_character);
    Decimal rest = Decimal::truncate(arguments[0].as_number());
    std::u16string result;
    while (!rest.is_zero() && !rest.is_negative()) {
        const Decimal groups = Decimal::truncate(*Decimal::divide(rest, group_size));
        const std::int64_t code = (rest - groups * group_size).to_int64();
        if (code > 0xFFFF) {
            result += static_cast<char16_t>(0xD7C0 + (code >> 10));
            result += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else if (code > 0) {
            result += static_cast<char16_t>(code);
        }
        rest = groups;
    }
    return result;
}

Value code(Arguments arguments) {
    // The host's numbers end at 400 digits, which is 80 characters.
    constexpr std::size_t most = Decimal::max_digits / 5;
    std::u16string characters = text(arguments, 0).substr(0, most);
    if (characters.empty())
        return Value();
    Decimal result;
    for (auto unit = characters.rbegin(); unit != characters.rend(); ++unit)
        result = result * Decimal(digits_per_character) + Decimal(*unit);
    return result;
}

Value length(Arguments arguments) {
    return Decimal(static_cast<std::int64_t>(text(arguments, 0).size()));
}

// The units of `source` in [first, first + count), of which parts may lie outside.
Value slice(std::u16string source, std::int64_t first, std::int64_t count) {
    const auto size = static_cast<std::int64_t>(source.size());
    const std::int64_t begin = std::clamp<std::int64_t>(first, 0, size);
    const std::int64_t end =
        std::clamp<std::int64_t>(first + std::max<std::int64_t>(count, 0), begin, size);
    source.erase(static_cast<std::size_t>(end));
    source.erase(0, static_cast<std::size_t>(begin));
    return source;
}

Value left(Arguments arguments) {
    return slice(text(arguments, 0), 0, whole(arguments[1]));
}

Value right(Arguments arguments) {
    std::u16string source = text(arguments, 0);
    const auto size = static_cast<std::int64_t>(source.size());
    const std::int64_t count = std::clamp<std::int64_t>(whole(arguments[1]), 0, size);
    return slice(std::move(source), size - count, count);
}

Value middle(Arguments arguments) {
    return slice(text(arguments, 0), whole(arguments[1]) - 1, whole(arguments[2]));
}

// Without regard to case, as Position and PatternCount search.
Value position(Arguments arguments) {
    const std::u16string source = lower_case(text(arguments, 0));
    const std::u16string search = lower_case(text(arguments, 1));
    const std::int64_t start = whole(arguments[2]);
    std::int64_t occurrence = whole(arguments[3]);
    if (search.empty() || occurrence == 0)
        return Decimal(0);
    std::size_t found = source.npos;
    if (occurrence > 0) {
        std::size_t from = static_cast<std::size_t>(std::max<std::int64_t>(start - 1, 0));
        for (; occurrence > 0; --occurrence, from = found + search.size()) {
            found = from > source.size() ? source.npos : source.find(search, from);
            if (found == source.npos)
                return Decimal(0);
        }
    } else {
        if (start < 1)
            return Decimal(0);
        std::size_t from = static_cast<std::size_t>(start - 1);
        for (; occurrence < 0; ++occurrence) {
            found = source.rfind(search, from);
            if (found == source.npos || (occurrence < -1 && found < search.size()))
                return Decimal(0);
            from = found - search.size();
        }
    }
    return Decimal(static_cast<std::int64_t>(found) + 1);
}

Value pattern_count(Arguments arguments) {
    const std::u16string source = lower_case(text(arguments, 0));
    const std::u16string search = lower_case(text(arguments, 1));
    std::int64_t count = 0;
    if (!search.empty()) {
        for (std::size_t at = source.find(search); at != source.npos;
             at = source.find(search, at + search.size()))
            ++count;
    }
    return Decimal(count);
}

Value upper(Arguments arguments) {
    return upper_case(text(arguments, 0));
}
Value lower(Arguments arguments) {
    return lower_case(text(arguments, 0));
}

Value trim(Arguments arguments) {
    const std::u16string source = text(arguments, 0);
    const std::size_t first = source.find_first_not_of(u' ');
    if (first == source.npos)
        return Value();
    return source.substr(first, source.find_last_not_of(u' ') + 1 - first);
}

Value exact(Arguments arguments) {
    return Value::boolean(text(arguments, 0) == text(arguments, 1));
}

Value is_empty(Arguments arguments) {
    return Value::boolean(arguments[0].is_empty());
}
Value constant_true(Arguments) {
    return Value::boolean(true);
}
Value constant_false(Arguments) {
    return Value::boolean(false);
}

constexpr Builtin table[] = {
    {u"Case", "Case( test1 ; result1 { ; test2 ; result2 … ; default } )", 2, -1,
     BuiltinKind::Case},
    {u"Char", "Char( number )", 1, 1, BuiltinKind::Plain, character},
    {u"Code", "Code( text )", 1, 1, BuiltinKind::Plain, code},
    {u"Container", "Container( path )", 1, 1, BuiltinKind::FileContainer},
    {u"Date", "Date( month ; day ; year )", 3, 3, BuiltinKind::Plain, date},
    {u"Exact", "Exact( text ; text )", 2, 2, BuiltinKind::Plain, exact},
    {u"False", "False", 0, 0, BuiltinKind::Plain, constant_false},
    {u"GetAsDate", "GetAsDate( value )", 1, 1, BuiltinKind::Plain, as_date},
    {u"GetAsNumber", "GetAsNumber( value )", 1, 1, BuiltinKind::Plain, as_number},
    {u"GetAsText", "GetAsText( value )", 1, 1, BuiltinKind::Plain, as_text},
    {u"GetAsTime", "GetAsTime( value )", 1, 1, BuiltinKind::Plain, as_time},
    {u"GetAsTimestamp", "GetAsTimestamp( value )", 1, 1, BuiltinKind::Plain, as_timestamp},
    {u"If", "If( test ; resultOne { ; resultTwo } )", 2, 3, BuiltinKind::If},
    {u"IsEmpty", "IsEmpty( value )", 1, 1, BuiltinKind::Plain, is_empty},
    {u"Left", "Left( text ; count )", 2, 2, BuiltinKind::Plain, left},
    {u"Length", "Length( text )", 1, 1, BuiltinKind::Plain, length},
    {u"Lower", "Lower( text )", 1, 1, BuiltinKind::Plain, lower},
    {u"Middle", "Middle( text ; start ; count )", 3, 3, BuiltinKind::Plain, middle},
    {u"PatternCount", "PatternCount( text ; search )", 2, 2, BuiltinKind::Plain, pattern_count},
    {u"Position", "Position( text ; search ; start ; occurrence )", 4, 4, BuiltinKind::Plain,
     position},
    {u"Right", "Right( text ; count )", 2, 2, BuiltinKind::Plain, right},
    {u"Substitute", "Substitute( text ; search ; replacement )", 3, -1, BuiltinKind::Substitute},
    {u"Time", "Time( hours ; minutes ; seconds )", 3, 3, BuiltinKind::Plain, time},
    {u"Timestamp", "Timestamp( date ; time )", 2, 2, BuiltinKind::Plain, timestamp},
    {u"Trim", "Trim( text )", 1, 1, BuiltinKind::Plain, trim},
    {u"True", "True", 0, 0, BuiltinKind::Plain, constant_true},
    {u"Upper", "Upper( text )", 1, 1, BuiltinKind::Plain, upper},
};

} // namespace

std::span<const Builtin> builtins() {
    return table;
}

const Builtin* find_builtin(std::u16string_view name) {
    for (const Builtin& function : table) {
        if (equal_ignoring_case(function.name, name))
            return &function;
    }
    return nullptr;
}

std::u16string substitute(std::u16string_view source, std::u16string_view search,
                          std::u16string_view replacement) {
    std::u16string result;
    if (search.empty())
        return std::u16string(source);
    std::size_t copied = 0;
    for (std::size_t at = source.find(search); at != source.npos;
         at = source.find(search, copied)) {
        result += source.substr(copied, at - copied);
        result += replacement;
        copied = at + search.size();
    }
    result += source.substr(copied);
    return result;
}

} // namespace vell::console
