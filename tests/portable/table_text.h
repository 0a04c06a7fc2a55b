// Tables of cases in the folder `data`: one case a line, its cells between bars with blanks around
// them. Blanks at the ends of a cell do not count; "␠" is one that does, and "␍", "␊", "␉" and "␀"
// are the characters of those names. Lines that begin with "#" are comments.
#pragma once

#include "src/base/utf8.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::test {

inline std::string cell_text(std::string_view cell) {
    const std::size_t start = std::min(cell.find_first_not_of(' '), cell.size());
    std::string text(cell.substr(start, cell.find_last_not_of(' ') + 1 - start));
    using namespace std::string_view_literals;
    for (const auto& [symbol, meaning] : {std::pair("␠"sv, " "sv),
                                          {"␍"sv, "\r"sv},
                                          {"␊"sv, "\n"sv},
                                          {"␉"sv, "\t"sv},
                                          {"␀"sv, "\0"sv}})
        for (std::size_t at; (at = text.find(symbol)) != text.npos;)
            text.replace(at, symbol.size(), meaning);
    return text;
}

// Bytes that are no UTF-8 may stand as "\xE9" in a cell.
inline std::string bytes_of_text(std::string text) {
    for (std::size_t at; (at = text.find("\\x")) != text.npos;)
        text.replace(at, 4, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
    return text;
}

// The cases of a file, each of so many cells.
inline std::vector<std::vector<std::string>> table(const std::string& name, std::size_t cells) {
    std::ifstream file(VELL_TEST_DATA "/" + name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.starts_with('#'))
            continue;
        line = ' ' + line + ' ';
        std::vector<std::string>& row = rows.emplace_back();
        for (std::size_t at = 0, end = 0; end != line.npos; at = end + 2) {
            end = line.find(" | ", at);
            row.push_back(cell_text(std::string_view(line).substr(at, end - at)));
        }
        EXPECT_EQ(row.size(), cells) << name << ": " << line;
        row.resize(cells);
    }
    EXPECT_FALSE(rows.empty()) << name;
    return rows;
}
// The same in UTF-16.
inline std::vector<std::vector<std::u16string>> wide_table(const std::string& name,
                                                           std::size_t cells) {
    std::vector<std::vector<std::u16string>> rows;
    for (const std::vector<std::string>& row : table(name, cells)) {
        rows.emplace_back();
        for (const std::string& cell : row)
            rows.back().push_back(utf16_from_utf8(cell));
    }
    return rows;
}

} // namespace vell::test
