#include "src/params/switch_text.h"

#include "src/base/ascii.h"

namespace vell::params {
namespace {

constexpr auto npos = std::u16string_view::npos;

// Takes a quoted text, or what there is of it, from the front of `rest`.
std::u16string take_quoted(std::u16string_view& rest) {
    std::u16string value;
    rest.remove_prefix(1);
    for (;;) {
        const std::size_t quote = rest.find(u'"');
        value += rest.substr(0, quote);
        rest.remove_prefix(quote == npos ? rest.size() : quote + 1);
        if (!rest.starts_with(u'"'))
            return value;
        value += u'"';
        rest.remove_prefix(1);
    }
}

std::u16string_view trimmed(std::u16string_view text) {
    const std::size_t start = text.find_first_not_of(u' ');
    return start == npos ? std::u16string_view()
                         : text.substr(start, text.find_last_not_of(u' ') - start + 1);
}

// Takes the front of `rest` up to the value of the next switch of that name, and the value.
std::optional<std::u16string> take_value(std::u16string_view& rest, std::u16string_view name) {
    while (!rest.empty()) {
        if (starts_ignoring_case(rest, name)) {
            rest.remove_prefix(name.size());
            if (rest.starts_with(u'"'))
                return take_quoted(rest);
            const std::u16string_view value = rest.substr(0, rest.find(u'-', 1));
            rest.remove_prefix(value.size());
            return std::u16string(trimmed(value));
        }
        const bool is_equals_sign = rest.front() == u'=';
        rest.remove_prefix(1);
        if (is_equals_sign && rest.starts_with(u'"'))
            take_quoted(rest);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::u16string> switch_text(std::u16string_view switches, std::u16string_view name) {
    return take_value(switches, name);
}

std::vector<std::u16string> switch_texts(std::u16string_view switches, std::u16string_view name) {
    std::vector<std::u16string> values;
    while (auto value = take_value(switches, name))
        values.push_back(*std::move(value));
    return values;
}

} // namespace vell::params
