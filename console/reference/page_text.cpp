#include "console/reference/page_text.h"

#include "console/model/unicode.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vell::console {

namespace {

constexpr std::string_view fence = "```";

// The next line of the text, without its end.
std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::string_view without_facts(std::string_view markdown) {
    constexpr std::string_view mark = "---";
    std::string_view rest = markdown;
    if (take_line(rest) != mark)
        return markdown;
    while (!rest.empty())
        if (take_line(rest) == mark)
            return rest;
    return markdown;
}

// "[words](address)" as words, and code without its marks.
std::string plain(std::string_view text) {
    std::string words;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t words_end = text[i] == '[' ? text.find("](", i) : text.npos;
        const std::size_t end = words_end == text.npos ? words_end : text.find(')', words_end);
        if (end != text.npos) {
            words += plain(text.substr(i + 1, words_end - i - 1));
            i = end;
        } else if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '|') {
            words += text[++i];
        } else if (text[i] != '`' && text.substr(i, 2) != "**") {
            words += text[i];
        } else {
            i += text[i] == '*';
        }
    }
    return words;
}

// Characters on the screen, as far as each has one place.
std::size_t width_of(std::string_view utf8) {
    return static_cast<std::size_t>(std::ranges::count_if(
        utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines{""};
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (word.empty())
            continue;
        const bool fits = width_of(lines.back()) + 1 + width_of(word) <= width;
        if (!lines.back().empty() && !fits)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + std::string(word);
    }
    return lines;
}

using Row = std::vector<std::string>;

bool is_row(std::string_view line) {
    return line.starts_with('|');
}

Row cells_of(std::string_view line) {
    Row cells;
    std::size_t start = 1;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] != '|' || line[i - 1] == '\\')
            continue;
        std::string_view cell = line.substr(start, i - start);
        const std::size_t first = std::min(cell.find_first_not_of(' '), cell.size());
        cell = cell.substr(first, cell.find_last_not_of(' ') + 1 - first);
        cells.push_back(plain(cell));
        start = i + 1;
    }
    return cells;
}

bool is_rule(const Row& row) {
    return std::ranges::all_of(row, [](const std::string& cell) {
        return !cell.empty() && cell.find_first_not_of("-:") == cell.npos;
    });
}

// All columns but the last are as wide as what is in them, up to a third of the line.
std::string table_text(const std::vector<Row>& rows, std::size_t width) {
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], width_of(row[i]));
    }
    std::size_t used = 2;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
        widths[i] = std::min(widths[i], width / 3);
        used += widths[i] + 2;
    }
    if (!widths.empty())
        widths.back() = std::max<std::size_t>(width > used ? width - used : 0, 20);
    std::string text;
    for (const Row& row : rows) {
        std::vector<std::vector<std::string>> columns;
        std::size_t height = 0;
        for (std::size_t i = 0; i < row.size(); ++i) {
            columns.push_back(wrapped(row[i], widths[i]));
            height = std::max(height, columns.back().size());
        }
        for (std::size_t line = 0; line < height; ++line) {
            std::string shown = " ";
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const std::string cell = line < columns[i].size() ? columns[i][line] : "";
                shown += " " + cell;
                if (i + 1 < columns.size())
                    shown.append(widths[i] + 1 - std::min(widths[i], width_of(cell)), ' ');
            }
            shown.erase(shown.find_last_not_of(' ') + 1);
            text += shown + "\n";
        }
    }
    return text;
}

class Writer {
  public:
    explicit Writer(std::size_t width) : width_(width) {}

    std::string write(std::string_view markdown) {
        while (!markdown.empty())
            add(take_line(markdown));
        end_block();
        return std::move(text_);
    }

  private:
    void add(std::string_view line) {
        if (line.starts_with(fence)) {
            end_block();
            is_code_ = !is_code_;
            is_result_ = is_code_ && line.substr(fence.size()).starts_with("result");
            if (!is_code_)
                text_ += "\n";
        } else if (is_code_) {
            text_ += (is_result_ ? "        " : "    ") + std::string(line) + "\n";
        } else if (line.empty()) {
            end_block();
        } else if (line.starts_with('#')) {
            end_block();
            heading(line);
        } else if (is_row(line)) {
            if (Row row = cells_of(line); !is_rule(row))
                rows_.push_back(std::move(row));
        } else {
            paragraph_ += (paragraph_.empty() ? "" : " ") + plain(line);
        }
    }

    void heading(std::string_view line) {
        const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
        const std::string words = plain(line.substr(std::min(level + 1, line.size())));
        text_ += level == 2 ? utf8_from_utf16(upper_case(utf16_from_utf8(words))) : words;
        text_ += "\n\n";
    }

    void end_block() {
        if (!paragraph_.empty()) {
            for (const std::string& line : wrapped(paragraph_, width_))
                text_ += line + "\n";
            text_ += "\n";
        }
        if (!rows_.empty())
            text_ += table_text(rows_, width_) + "\n";
        paragraph_.clear();
        rows_.clear();
    }

    std::size_t width_;
    std::string text_;
    std::string paragraph_;
    std::vector<Row> rows_;
    bool is_code_ = false;
    bool is_result_ = false;
};

} // namespace

std::string page_as_text(std::string_view markdown, std::size_t width) {
    return Writer(width).write(without_facts(markdown));
}

std::string_view section_of(std::string_view markdown, std::string_view title) {
    std::string_view rest = markdown;
    std::size_t start = markdown.npos;
    bool is_code = false;
    while (!rest.empty()) {
        const std::size_t at = markdown.size() - rest.size();
        const std::string_view line = take_line(rest);
        is_code ^= line.starts_with(fence);
        if (is_code || !line.starts_with("## "))
            continue;
        if (start != markdown.npos)
            return markdown.substr(start, at - start);
        if (line.substr(3).starts_with(title))
            start = at;
    }
    return start == markdown.npos ? std::string_view() : markdown.substr(start);
}

} // namespace vell::console
