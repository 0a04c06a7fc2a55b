#include "console/host/reference_pages.h"

#include "console/calc/suggestion.h"
#include "console/model/unicode.h"
#include "console/reference/page_text.h"
#include "console/reference/switch_check.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace vell::console {

namespace {

constexpr std::size_t page_width = 100;
constexpr std::u16string_view prefix = u"VlFile_";
constexpr std::int32_t step_id_distance = 3000; // from the function that a step mirrors

std::string contents_of(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

std::u16string ReferencePages::function_of(std::u16string_view name) const {
    for (const RegisteredFunction& function : host_.functions())
        if (equal_ignoring_case(function.name, name) ||
            equal_ignoring_case(function.name, std::u16string(prefix).append(name)))
            return function.name;
    for (const RegisteredStep& step : host_.steps()) {
        if (!equal_ignoring_case(step.name, name))
            continue;
        for (const RegisteredFunction& function : host_.functions())
            if (function.id + step_id_distance == step.id)
                return function.name;
    }
    return {};
}

std::string ReferencePages::markdown(std::u16string_view name) const {
    const std::u16string function = function_of(name);
    if (function.empty())
        return {};
    return contents_of(folder_ / (function + u".md"));
}

std::string ReferencePages::page(std::u16string_view name) const {
    return page_as_text(markdown(name), page_width);
}

std::string ReferencePages::switches_and_codes(std::u16string_view name) const {
    const std::string text = markdown(name);
    std::string parts;
    for (const std::string_view title : {"Switches", "Result codes"})
        if (const auto section = section_of(text, title); !section.empty())
            parts += "\n" + page_as_text(section, page_width);
    if (!parts.empty())
        parts.pop_back(); // the last of two line ends
    return parts;
}

// The encodings stand in a page of the guide.
const std::vector<std::string>& ReferencePages::switches_of(const std::u16string& function) const {
    const auto [place, is_new] = switches_.try_emplace(function);
    std::vector<std::string>& names = place->second;
    if (!is_new)
        return names;
    names = switches_in(markdown(function), "Switches");
    if (std::erase(names, "-Encoding=NAME") > 0)
        for (std::string& name :
             switches_in(contents_of(folder_ / "../guide/encodings.md"), "All encodings"))
            names.push_back(std::move(name));
    return names;
}

std::string ReferencePages::unknown_switches(const std::u16string& function,
                                             std::u16string_view switches) const {
    const std::vector<std::string>& known = switches_of(function);
    std::string lines;
    if (!known.empty())
        for (const std::string& line :
             console::unknown_switches(utf8_from_utf16(switches), utf8_from_utf16(function), known))
            lines += line;
    return lines;
}

std::string ReferencePages::no_page(std::u16string_view name) const {
    const std::string shown = utf8_from_utf16(name);
    if (!function_of(name).empty())
        return "there is no page on " + shown + " in " + folder_.string() + "\n";
    std::vector<std::u16string_view> known;
    for (const RegisteredFunction& function : host_.functions())
        known.push_back(function.name);
    for (const RegisteredStep& step : host_.steps())
        known.push_back(step.name);
    const auto meant = closest_name(name, known);
    return "there is no function or script step " + shown +
           (meant ? "; is " + utf8_from_utf16(*meant) + " meant?\n" : "\n");
}

} // namespace vell::console
