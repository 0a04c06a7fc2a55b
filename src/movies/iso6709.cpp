#include "src/movies/iso6709.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace vell::movies {
namespace {

constexpr std::size_t most_digits = 24;

// One number of the text.
struct Component {
    std::string_view digits; // with the point, without the sign
    bool is_negative = false;

    double value() const {
        double number = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
        return number;
    }
    std::size_t whole_digits() const { return std::min(digits.find('.'), digits.size()); }
};

// Takes a sign and digits from the start of the text.
std::optional<Component> take_component(std::string_view& text) {
    if (text.empty() || (text.front() != '+' && text.front() != '-'))
        return std::nullopt;
    std::size_t end = 1;
    while (end < text.size() && (is_digit(text[end]) || text[end] == '.'))
        ++end;
    const Component component{text.substr(1, end - 1), text.front() == '-'};
    if (component.whole_digits() == 0 || component.digits.size() > most_digits ||
        std::ranges::count(component.digits, '.') > 1)
        return std::nullopt;
    text.remove_prefix(end);
    return component;
}

// `degree_digits` of the whole digits are degrees, two more minutes, two more seconds; the fraction
// belongs to the smallest of them. Degrees alone may be written with fewer digits.
std::optional<double> degrees_of(const Component& component, std::size_t degree_digits) {
    const std::size_t whole = component.whole_digits();
    const double number = component.value();
    double degrees = number;
    double minutes = 0;
    double seconds = 0;
    if (whole == degree_digits + 2) {
        degrees = std::trunc(number / 100);
        minutes = std::fmod(number, 100);
    } else if (whole == degree_digits + 4) {
        degrees = std::trunc(number / 10'000);
        minutes = std::trunc(std::fmod(number, 10'000) / 100);
        seconds = std::fmod(number, 100);
    } else if (whole > degree_digits) {
        return std::nullopt;
    }
    if (minutes >= 60 || seconds >= 60)
        return std::nullopt;
    degrees += minutes / 60 + seconds / 3600;
    return component.is_negative ? -degrees : degrees;
}

// So many digits before the point, and up to eight behind it.
std::string component_text(double value, std::size_t digits) {
    constexpr double scale = 1e8;
    const auto scaled = static_cast<std::uint64_t>(std::llround(std::abs(value) * scale));
    std::string whole = to_text(scaled / static_cast<std::uint64_t>(scale));
    std::string fraction = to_text(scaled % static_cast<std::uint64_t>(scale));
    whole.insert(0, digits - std::min(digits, whole.size()), '0');
    fraction.insert(0, 8 - fraction.size(), '0');
    fraction.resize(fraction.find_last_not_of('0') + 1);
    return (value < 0 ? "-" : "+") + whole + (fraction.empty() ? "" : "." + fraction);
}

} // namespace

std::optional<Position> parse_iso6709(std::string_view text) {
    constexpr double pole = 90;
    constexpr double date_line = 180;
    constexpr double highest = 1e9; // metres; as far as the moon
    const auto latitude = take_component(text);
    const auto longitude = latitude ? take_component(text) : std::nullopt;
    if (!longitude)
        return std::nullopt;
    const auto north = degrees_of(*latitude, 2);
    const auto east = degrees_of(*longitude, 3);
    if (!north || !east || std::abs(*north) > pole || std::abs(*east) > date_line)
        return std::nullopt;
    Position position{*north, *east, std::nullopt};
    if (const auto altitude = take_component(text); altitude && altitude->value() <= highest)
        position.altitude = altitude->is_negative ? -altitude->value() : altitude->value();
    return position;
}

std::string iso6709_text(const Position& position) {
    return component_text(position.latitude, 2) + component_text(position.longitude, 3) +
           (position.altitude ? component_text(*position.altitude, 1) : "") + "/";
}

std::string degrees_minutes_seconds(double degrees, char positive, char negative) {
    // In thousandths of a second, so that no part is ever 60.
    constexpr std::uint64_t second = 1000;
    const auto all = static_cast<std::uint64_t>(std::llround(std::abs(degrees) * 3600 * second));
    const std::uint64_t whole = all / (3600 * second);
    const std::uint64_t minutes = all / (60 * second) % 60;
    const double seconds = static_cast<double>(all % (60 * second)) / second;
    return to_text(whole) + "\u00B0 " + to_text(minutes) + "' " + to_text(seconds, 5) + "\" " +
           (degrees < 0 ? negative : positive);
}

} // namespace vell::movies
