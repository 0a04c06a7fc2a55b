// Tables of many short texts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vell::testing {

// The cells of a table in one text, "|" behind each.
inline std::vector<std::u16string> cells(std::u16string_view table) {
    std::vector<std::u16string> found;
    for (; !table.empty(); table.remove_prefix(found.back().size() + 1))
        found.emplace_back(table.substr(0, table.find(u'|')));
    return found;
}

} // namespace vell::testing
