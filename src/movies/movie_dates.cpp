#include "src/movies/movie_dates.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>

namespace vell::movies {
namespace {

constexpr std::uint64_t seconds_to_1970 = 2'082'844'800; // from 1904

std::string with_zeros(std::uint64_t number, std::size_t digits) {
    std::string text = to_text(number);
    text.insert(0, digits - std::min(digits, text.size()), '0');
    return text;
}

// Takes so many digits from the start, and what may stand behind them.
std::optional<std::string_view> take(std::string_view& text, std::size_t digits,
                                     std::string_view separators) {
    if (text.size() < digits || !std::ranges::all_of(text.substr(0, digits), is_digit<char>))
        return std::nullopt;
    const std::string_view taken = text.substr(0, digits);
    text.remove_prefix(digits);
    if (!text.empty() && separators.find(text.front()) != std::string_view::npos)
        text.remove_prefix(1);
    return taken;
}

bool lies_within(std::string_view digits, int least, int most) {
    int number = 0;
    for (const char digit : digits)
        number = number * 10 + (digit - '0');
    return number >= least && number <= most;
}

// "Z", "+02:00" for "+0200", "+02", "+02:00"; nothing for anything else.
std::string zone_of(std::string_view text) {
    if (text.starts_with('Z'))
        return "Z";
    if (text.empty() || (text.front() != '+' && text.front() != '-'))
        return {};
    std::string zone(1, text.front());
    text.remove_prefix(1);
    const auto hours = take(text, 2, ":");
    if (!hours)
        return {};
    const auto minutes = take(text, 2, "");
    return zone + std::string(*hours) + ":" + std::string(minutes.value_or("00"));
}

} // namespace

std::optional<HeaderDate> header_date(std::uint64_t seconds) {
    constexpr std::int64_t end_of_year_9999 = 253'402'300'800; // from 1970
    if (seconds == 0 || seconds > seconds_to_1970 + end_of_year_9999)
        return std::nullopt;
    HeaderDate date;
    date.counts_from_1970 = seconds < seconds_to_1970;
    const auto from_1970 =
        static_cast<std::int64_t>(date.counts_from_1970 ? seconds : seconds - seconds_to_1970);
    if (from_1970 >= end_of_year_9999)
        return std::nullopt;
    const std::chrono::sys_seconds moment{std::chrono::seconds{from_1970}};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day calendar{day};
    const std::chrono::hh_mm_ss time{moment - day};
    date.text = with_zeros(static_cast<unsigned>(static_cast<int>(calendar.year())), 4) + "-" +
                with_zeros(static_cast<unsigned>(calendar.month()), 2) + "-" +
                with_zeros(static_cast<unsigned>(calendar.day()), 2) + "T" +
                with_zeros(static_cast<std::uint64_t>(time.hours().count()), 2) + ":" +
                with_zeros(static_cast<std::uint64_t>(time.minutes().count()), 2) + ":" +
                with_zeros(static_cast<std::uint64_t>(time.seconds().count()), 2) + "Z";
    return date;
}

std::optional<std::string> iso_date(std::string_view text) {
    const auto year = take(text, 4, "-:/");
    const auto month = year ? take(text, 2, "-:/") : std::nullopt;
    const auto day = month ? take(text, 2, "T ") : std::nullopt;
    if (!day || !lies_within(*month, 1, 12) || !lies_within(*day, 1, 31))
        return std::nullopt;
    std::string date = std::string(*year) + "-" + std::string(*month) + "-" + std::string(*day);
    const auto hour = take(text, 2, ":");
    const auto minute = hour ? take(text, 2, ":") : std::nullopt;
    if (!minute || !lies_within(*hour, 0, 23) || !lies_within(*minute, 0, 59))
        return date;
    const auto second = take(text, 2, "");
    date += "T" + std::string(*hour) + ":" + std::string(*minute) + ":" +
            std::string(second.value_or("00"));
    if (second && text.starts_with('.')) {
        const std::size_t end = std::min(text.find_first_not_of("0123456789", 1), text.size());
        if (end > 1)
            date += text.substr(0, end);
        text.remove_prefix(end);
    }
    return date + zone_of(text);
}

std::optional<std::string> year_of(std::string_view text) {
    if (const auto year = take(text, 4, ""))
        return std::string(*year);
    return std::nullopt;
}

} // namespace vell::movies
