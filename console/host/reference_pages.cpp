#include "console/host/reference_pages.h"

#include "console/calc/suggestion.h"
#include "console/model/unicode.h"
#include "console/reference/page_text.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace vell::console {

namespace {

constexpr std::size_t page_width = 100;
constexpr std::u16string_view prefix = u"VlFile_";
constexpr std::int32_t step_id_distance = 3000; // from the function that a step mirrors

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
    std::ifstream file(folder_ / (function + u".md"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
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
