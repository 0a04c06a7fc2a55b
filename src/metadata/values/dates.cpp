#include "src/metadata/values/dates.h"

#include "src/base/ascii.h"

#include <algorithm>

namespace vell::metadata {
namespace {

// Whether the text is made as the form is, in which "0" stands for any digit.
bool has_form(std::string_view text, std::string_view form) {
    return std::ranges::equal(text, form, [](char c, char expected) {
        return expected == '0' ? is_digit(c) : c == expected;
    });
}

bool is_within(std::string_view two_digits, int least, int most) {
    const int number = (two_digits[0] - '0') * 10 + (two_digits[1] - '0');
    return number >= least && number <= most;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(std::string_view(" \0", 2)) - start + 1);
}

bool are_digits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, is_digit<char>);
}

// "07:08:09" and what may stand behind it.
bool is_time(std::string_view text) {
    return is_within(text.substr(0, 2), 0, 24) && is_within(text.substr(3, 2), 0, 59) &&
           is_within(text.substr(6, 2), 0, 60);
}

bool is_offset(std::string_view text) {
    return text == "Z" || has_form(text, "+00:00") || has_form(text, "-00:00");
}

} // namespace

std::optional<std::string> exif_date(std::string_view text, std::string_view fraction,
                                     std::string_view offset) {
    text = trimmed(text);
    // Some write hyphens, or a "T" before the time, which the standard has not.
    std::string date(text.substr(0, 10));
    std::ranges::replace(date, ':', '-');
    if (!has_form(date, "0000-00-00") || !is_within(std::string_view(date).substr(5, 2), 1, 12) ||
        !is_within(std::string_view(date).substr(8, 2), 1, 31))
        return std::nullopt;
    if (text.size() == date.size())
        return date;
    const std::string_view time = text.substr(11);
    const char between = text[10];
    if ((between != ' ' && between != 'T') || !has_form(time, "00:00:00") || !is_time(time))
        return std::nullopt;
    date += 'T' + std::string(time);
    fraction = trimmed(fraction);
    if (are_digits(fraction))
        date += '.' + std::string(fraction);
    offset = trimmed(offset);
    if (is_offset(offset))
        date += offset;
    return date;
}

std::optional<std::string> iptc_date(std::string_view text) {
    if (!has_form(text, "00000000"))
        return std::nullopt;
    const std::string_view month = text.substr(4, 2);
    const std::string_view day = text.substr(6, 2);
    std::string date(text.substr(0, 4));
    if (!is_within(month, 0, 12) || !is_within(day, 0, 31) || date == "0000")
        return std::nullopt;
    if (month == "00")
        return date;
    date += '-' + std::string(month);
    return day == "00" ? date : date + '-' + std::string(day);
}

std::optional<std::string> iptc_time(std::string_view text) {
    const std::string_view time = text.substr(0, 6);
    const std::string_view offset = text.substr(time.size());
    const bool has_offset = has_form(offset, "+0000") || has_form(offset, "-0000");
    if (!has_form(time, "000000") || (!offset.empty() && !has_offset))
        return std::nullopt;
    std::string with_colons = std::string(time.substr(0, 2)) + ':' +
                              std::string(time.substr(2, 2)) + ':' + std::string(time.substr(4));
    if (!is_time(with_colons))
        return std::nullopt;
    if (has_offset)
        with_colons += std::string(offset.substr(0, 3)) + ':' + std::string(offset.substr(3));
    return with_colons;
}

} // namespace vell::metadata
