// Examples of the reference as scripts/selftest_examples.py writes them, and what the console host
// prints when they are run. Portable.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::selftest {

struct Example {
    std::string title;
    std::vector<std::string> statements = {};
    std::string result = {}; // lines end with LF; … stands for anything
    bool needs_plain_path = false;
};

struct ExamplePage {
    std::string name;
    std::vector<Example> examples = {};
};

std::vector<ExamplePage> read_examples(std::string_view text);

// Lines of a text that are statements: neither blank nor a comment.
std::vector<std::string> statements_in(std::string_view text);

// A text as a literal of the console's language.
std::string literal(std::string_view text);

// Statements for vellhost --raw, each followed by one that prints a mark, and what was printed by
// each of them; nullopt when marks are missing.
std::string marked_statements(const std::vector<std::string>& statements);
std::optional<std::vector<std::string>> split_at_marks(std::string_view output, std::size_t count);

// What an example gives, of what its statements printed.
std::string result_of(const Example& example, const std::string* printed);

bool matches(std::string_view expected, std::string_view actual);

} // namespace vell::selftest
