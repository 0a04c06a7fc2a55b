// Switches against a reading character by character. The input's first line is a switch's name,
// the rest the switches.
#include "fuzz/input.h"
#include "src/params/encodings.h"
#include "src/params/switches.h"

#include <string>

namespace vell::switches_fuzz {
namespace {

using vell::params::SwitchSet;
using vell::params::TextEncoding;

std::string in_case(std::string_view text, char first, int offset) {
    std::string result(text);
    for (char& c : result)
        if (c >= first && c < first + 26)
            c = static_cast<char>(c + offset);
    return result;
}

std::string lower(std::string_view text) {
    return in_case(text, 'A', 'a' - 'A');
}
std::string upper(std::string_view text) {
    return in_case(text, 'a', 'A' - 'a');
}

std::string expected_value(const std::string& text, const std::string& name, std::size_t capacity) {
    const std::size_t found = lower(text).find(lower(name));
    if (found == std::string::npos)
        return {};
    std::string value = name;
    for (std::size_t i = found + name.size(); i < text.size(); ++i) {
        const bool first = i == found + name.size();
        if ((text[i] == '-' && !first) || value.size() - name.size() + 1 >= capacity)
            break;
        value += text[i];
    }
    return value;
}

void check_value(const SwitchSet& switches, const std::string& text, const std::string& name) {
    const bool present = lower(text).find(lower(name)) != std::string::npos;
    FUZZ_CHECK(switches.has(name) == present);
    FUZZ_CHECK(switches.has(upper(name)) == present);
    for (const std::size_t capacity : {0, 1, 2, 5, 20, 5000}) {
        const std::string value = switches.value(name, capacity);
        FUZZ_CHECK(value == expected_value(text, name, capacity));
        if (!present)
            continue;
        FUZZ_CHECK(value.starts_with(name));
        FUZZ_CHECK(value.size() - name.size() <= (capacity > 0 ? capacity - 1 : 0));
    }
}

void check_encoding(const SwitchSet& switches, const std::string& text) {
    constexpr auto one_default = static_cast<TextEncoding>(-1);
    constexpr auto another_default = static_cast<TextEncoding>(-2);
    const TextEncoding encoding = encoding_of(switches, one_default);
    FUZZ_CHECK(encoding_of(SwitchSet(lower(text)), one_default) == encoding);
    FUZZ_CHECK(encoding_of(SwitchSet(upper(text)), one_default) == encoding);
    FUZZ_CHECK(encoding_of(switches, another_default) ==
               (encoding == one_default ? another_default : encoding));
    FUZZ_CHECK(encoding == one_default || switches.has("-Encoding="));
    FUZZ_CHECK(encoding == one_default ||
               (encoding >= TextEncoding::Native && encoding <= TextEncoding::Iso8859_15));
    FUZZ_CHECK(contents_encoding_of(switches, one_default) ==
               (switches.has("-Encoding=BytesOnly") ? TextEncoding::BytesOnly : encoding));
}

} // namespace

FUZZ_TARGET(switches) {
    std::string_view input = fuzz::as_text(data, size);
    const std::string name(fuzz::take_line(input));
    const SwitchSet switches(input);
    const std::string text(input.substr(0, SwitchSet::max_length));
    check_value(switches, text, name);
    check_encoding(switches, text);
    return 0;
}

} // namespace vell::switches_fuzz
