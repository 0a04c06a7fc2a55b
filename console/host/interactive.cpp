#include "console/host/interactive.h"

#include "console/host/help_page.h"
#include "console/host/report.h"
#include "console/host/terminal.h"
#include "console/model/unicode.h"

namespace vell::console {

namespace {

std::u16string_view trimmed(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(u" \t");
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(u" \t") + 1 - first);
}

// The longest line of a value that fits on the screen.
std::string short_form(const Value& value) {
    constexpr std::size_t width = 60;
    std::u16string text = value.as_text();
    const bool cut = text.size() > width;
    text.resize(std::min(text.size(), width));
    for (char16_t& unit : text)
        unit = unit == u'\r' || unit == u'\n' ? u'\u00B6' : unit;
    return std::string(type_name(value.type())) + " " + utf8_from_utf16(text) + (cut ? "…" : "");
}

class Prompt {
  public:
    Prompt(const PluginHost& host, const ReferencePages& pages, Session& session,
           const std::function<void(std::u16string_view)>& run)
        : host_(host), pages_(pages), session_(session), run_(run) {}

    void loop();

  private:
    std::optional<std::u16string> next_line();
    bool command(std::u16string_view line); // false: it is a statement
    void describe(std::u16string_view name);
    void show_history() const;
    void show_variables();
    std::optional<std::u16string> recalled(std::u16string_view line) const;

    const PluginHost& host_;
    const ReferencePages& pages_;
    Session& session_;
    const std::function<void(std::u16string_view)>& run_;
    std::vector<std::u16string> history_;
    bool done_ = false;
};

// A program that sits between a person and this one is told by the mark that the last answer is
// complete.
std::optional<std::u16string> Prompt::next_line() {
    if (input_is_console())
        return read_console_line("> ");
    write_output("\x1E\n");
    return read_line(standard_input());
}

void Prompt::loop() {
    write_output(utf8_from_utf16(host_.identity().name) + " " + host_.identity().file_version +
                 " is running. Type a calculation, or help.\n");
    while (!done_) {
        const auto entered = next_line();
        if (!entered)
            break;
        std::u16string line(trimmed(*entered));
        if (line.empty())
            continue;
        if (line.starts_with(u"!")) {
            const auto earlier = recalled(line);
            if (!earlier) {
                write_error("there is no entry " + utf8_from_utf16(line) + " in the history\n");
                continue;
            }
            line = *earlier;
            write_output(utf8_from_utf16(line) + "\n");
        }
        history_.push_back(line);
        if (!command(line))
            run_(line);
    }
}

bool Prompt::command(std::u16string_view line) {
    const std::size_t blank = std::min(line.size(), line.find(u' '));
    const std::u16string_view word = line.substr(0, blank);
    const std::u16string_view rest = trimmed(line.substr(blank));
    const bool has_name = !rest.empty() && !rest.starts_with(u"(");
    if (has_name && equal_ignoring_case(word, u"describe")) {
        describe(rest);
        return true;
    }
    if (has_name && equal_ignoring_case(word, u"help")) {
        const std::string page = pages_.page(rest);
        write_output(page.empty() ? pages_.no_page(rest) : page);
        return true;
    }
    if (!rest.empty())
        return false;
    if (equal_ignoring_case(word, u"quit") || equal_ignoring_case(word, u"exit"))
        done_ = true;
    else if (equal_ignoring_case(word, u"help"))
        write_output(interactive_help);
    else if (equal_ignoring_case(word, u"list"))
        write_output(registration_list(host_));
    else if (equal_ignoring_case(word, u"history"))
        show_history();
    else if (equal_ignoring_case(word, u"variables"))
        show_variables();
    else
        return false;
    return true;
}

void Prompt::describe(std::u16string_view name) {
    const std::string text = description(host_, name) + pages_.switches_and_codes(name);
    write_output(text.empty() ? pages_.no_page(name) : text);
}

void Prompt::show_history() const {
    for (std::size_t i = 0; i < history_.size(); ++i)
        write_output(std::to_string(i + 1) + "  " + utf8_from_utf16(history_[i]) + "\n");
}

void Prompt::show_variables() {
    for (const auto& [name, value] : session_.variables())
        write_output(utf8_from_utf16(name) + " = " + short_form(value) + "\n");
}

// !N is entry N, !! the last one.
std::optional<std::u16string> Prompt::recalled(std::u16string_view line) const {
    const std::int64_t number = line == u"!!" ? static_cast<std::int64_t>(history_.size())
                                              : Decimal::from_any_text(line).to_int64();
    if (number < 1 || std::cmp_greater(number, history_.size()))
        return std::nullopt;
    return history_[static_cast<std::size_t>(number - 1)];
}

} // namespace

void run_prompt(const PluginHost& host, const ReferencePages& pages, Session& session,
                const std::function<void(std::u16string_view)>& run) {
    Prompt(host, pages, session, run).loop();
}

} // namespace vell::console
