#include "tests/soak/scenarios.h"

#include "console/model/unicode.h"

#include <sstream>
#include <stdexcept>

namespace vell::soak {
namespace {

CallLine read_line(std::size_t number, std::string_view text) {
    constexpr std::string_view arrow = " => ";
    CallLine line{number, {}, {}};
    const std::size_t end = text.rfind(arrow);
    line.calculation = utf16_from_utf8(text.substr(0, end));
    if (end != text.npos)
        line.expected = utf16_from_utf8(text.substr(end + arrow.size()));
    return line;
}

} // namespace

std::vector<Scenario> read_scenarios(const std::filesystem::path& file) {
    std::istringstream lines(read_bytes(file));
    std::vector<Scenario> scenarios;
    bool is_new = true;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.starts_with("//"))
            continue;
        if (line.empty()) {
            is_new = true;
            continue;
        }
        if (is_new)
            scenarios.emplace_back();
        is_new = false;
        scenarios.back().push_back(read_line(number, line));
    }
    if (scenarios.empty())
        throw std::runtime_error("there are no calls in " + file.string());
    return scenarios;
}

std::u16string filled_in(std::u16string text, const Names& names) {
    const std::pair<std::u16string_view, const std::u16string&> words[] = {
        {u"{own}", names.own},
        {u"{files}", names.files},
        {u"{any}", names.any},
        {u"{number}", names.number}};
    for (const auto& [word, name] : words)
        for (std::size_t at = text.find(word); at != text.npos;
             at = text.find(word, at + name.size()))
            text.replace(at, word.size(), name);
    return text;
}

Names chosen_names(const Workplace& workplace, const std::filesystem::path& examples,
                   const std::filesystem::path& own, Random& random) {
    const auto& source = workplace.corpus()[below(workplace.corpus().size(), random)];
    const std::filesystem::path any = own / source.filename();
    write_bytes(any, read_bytes(source));
    return {folder_text(own), folder_text(examples), any.u16string(),
            utf16_from_utf8(std::to_string(below(1'000'000, random)))};
}

bool is_expected(std::u16string_view result, std::u16string_view expected) {
    constexpr char16_t anything = u'…';
    if (!expected.empty() && expected.back() == anything) {
        expected.remove_suffix(1);
        // A result without anything is a failure only where it is one.
        if (expected.empty())
            return !result.starts_with(u"$$") && !result.starts_with(u"ERROR: ");
        return result.starts_with(expected);
    }
    return result == expected;
}

std::u16string result_of(console::Session& session, std::u16string_view calculation) {
    auto value = session.evaluate(calculation);
    return value ? std::move(value).value().as_text()
                 : u"ERROR: " + utf16_from_utf8(value.error().message);
}

} // namespace vell::soak
