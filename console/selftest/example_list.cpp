#include "console/selftest/example_list.h"

namespace vell::selftest {
namespace {

constexpr char mark = '\x1E'; // stands in no result
constexpr std::string_view anything = "\u2026";

template <typename Function>
void for_each_line(std::string_view text, Function&& function) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        function(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

std::optional<std::string_view> rest_behind(std::string_view line, std::string_view word) {
    return line.starts_with(word) ? std::optional(line.substr(word.size())) : std::nullopt;
}

bool is_assignment(std::string_view statement) {
    if (!statement.starts_with('$'))
        return false;
    const std::size_t end = statement.find_first_of(" =");
    const std::size_t sign = statement.find_first_not_of(' ', std::min(end, statement.size()));
    return sign != statement.npos && statement[sign] == '=';
}

std::string_view without_line_ends(std::string_view text) {
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

// As the pages show it: with LF, and a container's list without the last line's end.
std::string as_shown(std::string_view printed) {
    std::string text;
    for (std::size_t i = 0; i < printed.size(); ++i) {
        const bool is_pair = printed[i] == '\r' && i + 1 < printed.size() && printed[i + 1] == '\n';
        if (!is_pair)
            text += printed[i] == '\r' ? '\n' : printed[i];
    }
    if (text.starts_with("container \"") && text.ends_with('\n'))
        text.pop_back();
    return text;
}

} // namespace

std::vector<ExamplePage> read_examples(std::string_view text) {
    std::vector<ExamplePage> pages;
    std::size_t lines = 0; // of the current result
    for_each_line(text, [&](std::string_view line) {
        if (const auto name = rest_behind(line, "page "))
            return pages.push_back({std::string(*name)});
        if (pages.empty())
            return;
        std::vector<Example>& examples = pages.back().examples;
        if (const auto title = rest_behind(line, "example ")) {
            examples.push_back({std::string(*title)});
            lines = 0;
        } else if (examples.empty()) {
            return;
        } else if (line == "needs plain path") {
            examples.back().needs_plain_path = true;
        } else if (const auto statement = rest_behind(line, "> ")) {
            examples.back().statements.emplace_back(*statement);
        } else if (const auto result = rest_behind(line, "= ")) {
            examples.back().result += (lines++ > 0 ? "\n" : "") + std::string(*result);
        }
    });
    return pages;
}

std::vector<std::string> statements_in(std::string_view text) {
    std::vector<std::string> statements;
    for_each_line(text, [&](std::string_view line) {
        if (line.find_first_not_of(' ') != line.npos && !line.starts_with("//"))
            statements.emplace_back(line);
    });
    return statements;
}

std::string literal(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"')
            result += '\\';
        result += c;
    }
    return result + '"';
}

std::string marked_statements(const std::vector<std::string>& statements) {
    std::string script;
    for (const std::string& statement : statements)
        script += statement + "\nChar( " + std::to_string(int{mark}) + " )\n";
    return script;
}

std::optional<std::vector<std::string>> split_at_marks(std::string_view output, std::size_t count) {
    std::vector<std::string> printed;
    for (std::size_t end = output.find(mark); end != output.npos; end = output.find(mark)) {
        printed.emplace_back(output.substr(0, end));
        output.remove_prefix(end + 1);
    }
    return printed.size() == count ? std::optional(std::move(printed)) : std::nullopt;
}

std::string result_of(const Example& example, const std::string* printed) {
    std::string result;
    bool is_first = true;
    for (const std::string& statement : example.statements) {
        if (!is_assignment(statement)) {
            result += (is_first ? "" : "\n") + as_shown(*printed);
            is_first = false;
        }
        ++printed;
    }
    return result;
}

bool matches(std::string_view expected, std::string_view actual) {
    expected = without_line_ends(expected);
    actual = without_line_ends(actual);
    std::size_t end = expected.find(anything);
    if (end == expected.npos)
        return expected == actual;
    if (!actual.starts_with(expected.substr(0, end)))
        return false;
    actual.remove_prefix(end);
    for (;;) {
        expected.remove_prefix(end + anything.size());
        end = expected.find(anything);
        if (end == expected.npos)
            return actual.ends_with(expected);
        const std::size_t found = actual.find(expected.substr(0, end));
        if (found == actual.npos)
            return false;
        actual.remove_prefix(found + end);
    }
}

} // namespace vell::selftest
