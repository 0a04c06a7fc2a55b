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
    Prompt(const PluginHost& host, Session& session,
           const std::function<void(std::u16string_view)>& run)
        : host_(host), session_(session), run_(run) {}

    void loop();

  private:
    bool command(std::u16string_view line); // false: it is a statement
    void describe(std::u16string_view name);
    void show_history() const;
    void show_variables();
    std::optional<std::u16string> recalled(std::u16string_view line) const;

    const PluginHost& host_;
    Session& session_;
    const std::function<void(std::u16string_view)>& run_;
    std::vector<std::u16string> history_;
    bool done_ = false;
};

void Prompt::loop() {
    write_output(utf8_from_utf16(host_.identity().name) + " " + host_.identity().file_version +
                 " is running. Type a calculation, or help.\n");
    while (!done_) {
        const auto entered = read_console_line("> ");
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
    if (equal_ignoring_case(word, u"describe") && !rest.empty() && !rest.starts_with(u"(")) {
        describe(rest);
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
    const std::string text = description(host_, name);
    if (text.empty())
        write_error("there is no function or script step " + utf8_from_utf16(name) + "\n");
    write_output(text);
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

void run_prompt(const PluginHost& host, Session& session,
                const std::function<void(std::u16string_view)>& run) {
    Prompt(host, session, run).loop();
}

} // namespace vell::console
