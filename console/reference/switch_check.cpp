#include "console/reference/switch_check.h"

#include "console/calc/suggestion.h"
#include "console/reference/page_text.h"
#include "src/base/ascii.h"
#include "src/base/switch_words.h"
#include "src/base/utf8.h"

#include <algorithm>

namespace vell::console {

namespace {

// The words between backticks.
void add_code(std::string_view cell, std::vector<std::string>& names) {
    for (std::size_t start = cell.find('`'); start != cell.npos; start = cell.find('`', start)) {
        const std::size_t end = cell.find('`', start + 1);
        if (end == cell.npos)
            return;
        names.emplace_back(cell.substr(start + 1, end - start - 1));
        start = end + 1;
    }
}

std::string_view before_value(std::string_view name) {
    return name.substr(0, name.find('='));
}

// The name that may be meant: with its value, or else by what stands before it.
std::string nearest(std::string_view word, std::span<const std::string> known) {
    for (const bool is_whole : {true, false}) {
        std::vector<std::u16string> wide;
        for (const std::string& name : known)
            wide.push_back(utf16_from_utf8(is_whole ? name : before_value(name)));
        const std::vector<std::u16string_view> views(wide.begin(), wide.end());
        if (const auto name =
                closest_name(utf16_from_utf8(is_whole ? word : before_value(word)), views))
            return "; " + utf8_from_utf16(*name) + "?";
    }
    return "";
}

} // namespace

std::vector<std::string> switches_in(std::string_view markdown, std::string_view heading) {
    std::vector<std::string> names;
    std::string_view section = section_of(markdown, heading);
    while (!section.empty()) {
        const std::string_view line = section.substr(0, section.find('\n'));
        section.remove_prefix(std::min(line.size() + 1, section.size()));
        if (line.starts_with("| `"))
            add_code(line.substr(0, line.find('|', 1)), names);
    }
    return names;
}

std::vector<std::string> unknown_switches(std::string_view switches, std::string_view function,
                                          std::span<const std::string> known) {
    std::vector<std::string> lines;
    for (const std::string_view word : switch_words(switches)) {
        const bool is_known = std::ranges::any_of(known, [&](const std::string& name) {
            return find_ignoring_case(word, name) != word.npos;
        });
        if (!is_known)
            lines.push_back(std::string(word) + ": " + std::string(function) +
                            " has no such switch" + nearest(word, known) + "\n");
    }
    return lines;
}

} // namespace vell::console
