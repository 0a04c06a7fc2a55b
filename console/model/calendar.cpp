#include "console/model/calendar.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

namespace vell::console {

namespace {

constexpr std::int64_t days_per_era = 146'097; // 400 years
constexpr std::int64_t year_limit = 2'000'000'000;
constexpr std::int64_t day_limit = year_limit / 400 * days_per_era;

constexpr std::int64_t floor_divide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}
constexpr std::int64_t floor_modulo(std::int64_t value, std::int64_t divisor) {
    return value - floor_divide(value, divisor) * divisor;
}

// Days before a month of a common year.
constexpr std::array<int, 13> days_before = {0,   31,  59,  90,  120, 151, 181,
                                             212, 243, 273, 304, 334, 365};

// Days before 1 January of a year; 0 for year 1.
constexpr std::int64_t days_before_year(std::int64_t year) {
    const std::int64_t full = year - 1;
    return full * 365 + floor_divide(full, 4) - floor_divide(full, 100) + floor_divide(full, 400);
}

bool is_blank(char16_t unit) {
    return unit == u' ' || unit == u'\t';
}

void skip_blanks(std::u16string_view& text) {
    while (!text.empty() && is_blank(text.front()))
        text.remove_prefix(1);
}

std::u16string_view trimmed(std::u16string_view text) {
    skip_blanks(text);
    while (!text.empty() && is_blank(text.back()))
        text.remove_suffix(1);
    return text;
}

// Takes up to nine digits from the front; more, or none, is no number of a date or a time.
struct Number {
    std::int64_t value;
    std::size_t digits;
};
std::optional<Number> take_number(std::u16string_view& text) {
    Number number{0, 0};
    for (; number.digits < text.size() && is_digit(text[number.digits]); ++number.digits) {
        if (number.digits == 9)
            return std::nullopt;
        number.value = number.value * 10 + (text[number.digits] - u'0');
    }
    if (number.digits == 0)
        return std::nullopt;
    text.remove_prefix(number.digits);
    return number;
}

bool take(std::u16string_view& text, std::u16string_view any_of) {
    if (text.empty() || any_of.find(text.front()) == std::u16string_view::npos)
        return false;
    text.remove_prefix(1);
    return true;
}

std::int64_t current_year() {
    using namespace std::chrono;
    const auto days = duration_cast<hours>(system_clock::now().time_since_epoch()).count() / 24;
    return civil_date(day_number(1970, 1, 1) + days).year;
}

std::int64_t year_from_digits(Number year) {
    if (year.digits > 2)
        return year.value;
    const std::int64_t first = current_year() - 70;
    return first + floor_modulo(year.value - first, 100);
}

// Takes "1/31/2020" from the front of a text.
std::optional<std::int64_t> take_date(std::u16string_view& text) {
    constexpr std::u16string_view separators = u"/-.";
    const auto month = take_number(text);
    if (!month || !take(text, separators))
        return std::nullopt;
    const auto day = take_number(text);
    if (!day || !take(text, separators))
        return std::nullopt;
    const auto year_digits = take_number(text);
    if (!year_digits)
        return std::nullopt;
    const std::int64_t year = year_from_digits(*year_digits);
    if (year < 1 || year > 4000 || month->value < 1 || month->value > 12 || day->value < 1 ||
        day->value > days_in_month(year, static_cast<int>(month->value)))
        return std::nullopt;
    return day_number(year, month->value, day->value);
}

// Takes ".25" from the front of a text; nothing is a fraction of zero.
Decimal take_fraction(std::u16string_view& text) {
    std::size_t length = 0;
    if (!text.empty() && text.front() == u'.') {
        length = 1;
        while (length < text.size() && is_digit(text[length]))
            ++length;
    }
    const Decimal fraction = Decimal::from_any_text(text.substr(0, length));
    text.remove_prefix(length);
    return fraction;
}

enum class HalfOfDay { None, Morning, Afternoon };

std::optional<HalfOfDay> read_half(std::u16string_view text) {
    skip_blanks(text);
    if (text.empty())
        return HalfOfDay::None;
    if (text.size() != 2 || (text[1] | 0x20) != u'm')
        return std::nullopt;
    switch (text[0] | 0x20) {
    case u'a':
        return HalfOfDay::Morning;
    case u'p':
        return HalfOfDay::Afternoon;
    default:
        return std::nullopt;
    }
}

std::string two_digits(std::int64_t value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

// "04:05.25" of an hour.
std::string minutes_text(std::int64_t whole_seconds, const Decimal& fraction) {
    return two_digits(whole_seconds / 60 % 60) + ":" + two_digits(whole_seconds % 60) +
           (fraction.is_zero() ? "" : fraction.to_text());
}

} // namespace

bool is_leap_year(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int days_in_month(std::int64_t year, int month) {
    const auto index = static_cast<std::size_t>(month);
    return days_before[index] - days_before[index - 1] + (month == 2 && is_leap_year(year) ? 1 : 0);
}

std::int64_t day_number(std::int64_t year, std::int64_t month, std::int64_t day) {
    year = std::clamp(year, -year_limit, year_limit);
    month = std::clamp(month, -year_limit, year_limit) - 1;
    day = std::clamp(day, -day_limit, day_limit);
    year += floor_divide(month, 12);
    const auto index = static_cast<std::size_t>(floor_modulo(month, 12));
    const int leap_day = index >= 2 && is_leap_year(year) ? 1 : 0;
    return days_before_year(year) + days_before[index] + leap_day + day;
}

CivilDate civil_date(std::int64_t day_number) {
    std::int64_t rest = std::clamp(day_number, -day_limit, day_limit) - 1;
    const std::int64_t era = floor_divide(rest, days_per_era);
    rest -= era * days_per_era;
    // The average year's length never places a day more than one year too late.
    std::int64_t year = era * 400 + rest * 400 / days_per_era + 1;
    rest += era * days_per_era;
    if (days_before_year(year) > rest)
        --year;
    else if (days_before_year(year + 1) <= rest)
        ++year;
    rest -= days_before_year(year);
    int month = 1;
    while (rest >= days_in_month(year, month))
        rest -= days_in_month(year, month++);
    return {static_cast<std::int32_t>(year), month, static_cast<std::int32_t>(rest) + 1};
}

DayAndSeconds split_time_stamp(const Decimal& seconds) {
    const std::int64_t whole = Decimal::floor(seconds).to_int64();
    const std::int64_t days =
        std::clamp(floor_divide(whole, seconds_per_day), -day_limit, day_limit);
    return {days + 1, seconds - Decimal(days * seconds_per_day)};
}

Decimal join_time_stamp(std::int64_t day, const Decimal& seconds) {
    return Decimal(std::clamp(day, -day_limit, day_limit) - 1) * Decimal(seconds_per_day) + seconds;
}

std::string date_text(std::int64_t day_number) {
    const CivilDate date = civil_date(day_number);
    const std::string year = std::to_string(date.year);
    return std::to_string(date.month) + "/" + std::to_string(date.day) + "/" +
           std::string(year.size() < 4 ? 4 - year.size() : 0, '0') + year;
}

std::string time_text(const Decimal& seconds) {
    const Decimal positive = seconds.is_negative() ? -seconds : seconds;
    const Decimal whole = Decimal::truncate(positive);
    const std::int64_t count = whole.to_int64();
    return (seconds.is_negative() ? "-" : "") + std::to_string(count / 3600) + ":" +
           minutes_text(count, positive - whole);
}

std::string time_stamp_text(const Decimal& seconds) {
    const DayAndSeconds parts = split_time_stamp(seconds);
    const Decimal whole = Decimal::truncate(parts.seconds);
    const std::int64_t count = whole.to_int64();
    const std::int64_t hour = count / 3600;
    return date_text(parts.day) + " " + std::to_string(hour % 12 == 0 ? 12 : hour % 12) + ":" +
           minutes_text(count, parts.seconds - whole) + (hour < 12 ? " AM" : " PM");
}

std::optional<std::int64_t> parse_date(std::u16string_view text) {
    text = trimmed(text);
    const auto date = take_date(text);
    return text.empty() ? date : std::nullopt;
}

std::optional<Decimal> parse_time(std::u16string_view text) {
    text = trimmed(text);
    const bool negative = take(text, u"-");
    std::array<std::int64_t, 3> parts{};
    std::size_t count = 0;
    do {
        const auto number = take_number(text);
        if (!number)
            return std::nullopt;
        parts[count++] = number->value;
    } while (count < parts.size() && take(text, u":"));
    const Decimal fraction = count == parts.size() ? take_fraction(text) : Decimal();

    const auto half = read_half(text);
    if (!half)
        return std::nullopt;
    if (*half != HalfOfDay::None) {
        if (negative || parts[0] < 1 || parts[0] > 12)
            return std::nullopt;
        parts[0] = parts[0] % 12 + (*half == HalfOfDay::Afternoon ? 12 : 0);
    }
    const Decimal seconds = Decimal((parts[0] * 60 + parts[1]) * 60 + parts[2]) + fraction;
    return negative ? -seconds : seconds;
}

std::optional<Decimal> parse_time_stamp(std::u16string_view text) {
    text = trimmed(text);
    const auto date = take_date(text);
    if (!date)
        return std::nullopt;
    if (text.empty())
        return join_time_stamp(*date, Decimal());
    if (!is_blank(text.front()))
        return std::nullopt;
    const auto time = parse_time(text);
    if (!time)
        return std::nullopt;
    return join_time_stamp(*date, *time);
}

} // namespace vell::console
