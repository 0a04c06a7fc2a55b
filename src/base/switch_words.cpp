#include "src/base/switch_words.h"

#include "src/base/ascii.h"

namespace vell {
namespace {

constexpr bool separates(char c) {
    return c == ' ' || c == ',' || c == ';' || c == '\r' || c == '\n' || c == '\t';
}

} // namespace

std::vector<std::string_view> switch_words(std::string_view switches) {
    std::vector<std::string_view> words;
    bool is_quoted = false;
    for (std::size_t i = 0; i < switches.size(); ++i) {
        is_quoted ^= switches[i] == '"';
        const bool begins = switches[i] == '-' && (i == 0 || separates(switches[i - 1]));
        if (is_quoted || !begins || i + 1 == switches.size() || !is_letter(switches[i + 1]))
            continue;
        const std::size_t start = i;
        while (i + 1 < switches.size() && !separates(switches[i + 1]) && switches[i + 1] != '"')
            ++i;
        words.push_back(switches.substr(start, i + 1 - start));
    }
    return words;
}

} // namespace vell
