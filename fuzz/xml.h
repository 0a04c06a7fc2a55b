// Whether an answer is a document of XML.
#pragma once

#include <string_view>
#include <vector>

namespace vell::fuzz {

// Nothing but elements, one in the other, with attributes in quotes and the five entities.
inline bool is_well_formed(std::string_view text) {
    std::vector<std::string_view> open;
    while (!text.empty()) {
        if (text[0] == '&') {
            const std::string_view name = text.substr(1, text.find(';'));
            if (!name.starts_with("amp;") && !name.starts_with("lt;") && !name.starts_with("gt;") &&
                !name.starts_with("quot;"))
                return false;
        } else if (text[0] == '<') {
            const std::size_t end = text.find('>');
            std::string_view element = text.substr(1, end - 1);
            if (end == std::string_view::npos || element.find('<') != std::string_view::npos)
                return false;
            if (element.starts_with('/')) {
                if (open.empty() || open.back() != element.substr(1))
                    return false;
                open.pop_back();
            } else if (!element.starts_with('?')) {
                open.push_back(element.substr(0, element.find(' ')));
            }
            text.remove_prefix(end);
        } else if (text[0] == '>' || (text[0] >= 0 && text[0] < ' ' && text[0] != '\r' &&
                                      text[0] != '\n' && text[0] != '\t')) {
            return false;
        }
        text.remove_prefix(1);
    }
    return open.empty();
}

} // namespace vell::fuzz
