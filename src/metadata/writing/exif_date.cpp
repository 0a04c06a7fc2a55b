#include "src/metadata/writing/exif_date.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace vell::metadata {
namespace {

constexpr std::string_view date_form = "YYYY:MM:DD";
constexpr std::string_view date_and_time_form = "YYYY:MM:DD HH:MM:SS";

bool is_blank(std::string_view text) {
    return text.find_first_not_of(' ') == std::string_view::npos;
}

bool is_made_like(std::string_view text, std::string_view form) {
    return std::ranges::equal(text, form, [](char c, char wanted) {
        return is_letter(wanted) ? is_digit(c) || c == ' ' : c == wanted;
    });
}

// The number of a part, 0 where that is blank; -1 for digits beside blanks.
int part(std::string_view text, std::size_t at, std::size_t size) {
    const std::string_view digits = text.substr(at, size);
    if (is_blank(digits))
        return 0;
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + size, number);
    return error == std::errc() && end == digits.data() + size ? number : -1;
}

bool is_day(std::string_view text) {
    const int number_of_year = part(text, 0, 4);
    const int number_of_month = part(text, 5, 2);
    const int number_of_day = part(text, 8, 2);
    if (number_of_year < 0 || number_of_month < 0 || number_of_day < 0)
        return false;
    using namespace std::chrono;
    return year_month_day(year(number_of_year),
                          month(static_cast<unsigned>(std::max(number_of_month, 1))),
                          day(static_cast<unsigned>(std::max(number_of_day, 1))))
        .ok();
}

bool is_time_of_day(std::string_view text) {
    const auto is_below = [&](std::size_t at, int end) {
        const int number = part(text, at, 2);
        return number >= 0 && number < end;
    };
    return is_below(0, 24) && is_below(3, 60) && is_below(6, 61); // leap seconds are written
}

} // namespace

bool is_exif_date(std::string_view text, bool has_time) {
    const std::string_view form = has_time ? date_and_time_form : date_form;
    if (text.size() == form.size() && is_blank(text))
        return true;
    return is_made_like(text, form) && is_day(text) &&
           (!has_time || is_time_of_day(text.substr(date_form.size() + 1)));
}

} // namespace vell::metadata
