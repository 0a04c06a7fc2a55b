#include "console/host/command_line.h"

#include "console/calc/suggestion.h"
#include "console/host/wide_text.h"
#include "console/model/unicode.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace vell::console {

namespace {

// "--json" is an option, "-5" and "--5" are calculations.
bool is_option(std::u16string_view text) {
    if (text == u"--" || text == u"-h")
        return true;
    const char16_t letter = text.size() > 2 ? lower_case(text[2]) : u'\0';
    return text.starts_with(u"--") && letter >= u'a' && letter <= u'z';
}

template <typename Number>
Result<Number, std::string> whole_number(std::u16string_view text, std::string_view option,
                                         std::int64_t smallest, std::int64_t largest) {
    const std::string digits = utf8_from_utf16(text);
    std::int64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, value);
    if (digits.empty() || read.ec != std::errc() || read.ptr != end || value < smallest ||
        value > largest)
        return Failure{std::string(option) + " takes a number from " + std::to_string(smallest) +
                       " to " + std::to_string(largest) + ", not \"" + digits + "\""};
    return static_cast<Number>(value);
}

class CommandLineReader {
  public:
    explicit CommandLineReader(const std::vector<std::u16string>& arguments)
        : arguments_(arguments) {}

    Result<CommandLine, std::string> read();

  private:
    struct Option {
        std::u16string_view name;
        Result<void, std::string> (CommandLineReader::*read)(std::string_view option);
    };
    static const Option options[];

    Result<void, std::string> option(std::u16string text);
    Result<void, std::string> choose(Action action, std::u16string subject);
    Result<std::u16string, std::string> value(std::string_view option);

    Result<void, std::string> file(std::string_view option) {
        return choose(Action::File, VELL_TRY(value(option)));
    }
    Result<void, std::string> list(std::string_view) { return choose(Action::List, {}); }
    Result<void, std::string> describe(std::string_view option) {
        return choose(Action::Describe, VELL_TRY(value(option)));
    }
    Result<void, std::string> help(std::string_view) {
        result_.action = Action::Help;
        return {};
    }
    Result<void, std::string> json(std::string_view) { return set(result_.json); }
    Result<void, std::string> raw(std::string_view) { return set(result_.raw); }
    Result<void, std::string> echo(std::string_view) { return set(result_.echo); }
    Result<void, std::string> timing(std::string_view) { return set(result_.timing); }
    Result<void, std::string> prompt(std::string_view) { return set(result_.prompt); }
    Result<void, std::string> reference(std::string_view option) {
        result_.reference = to_wide(VELL_TRY(value(option)));
        return {};
    }
    Result<void, std::string> check_leaks(std::string_view) { return set(result_.check_leaks); }
    Result<void, std::string> window(std::string_view) { return set(result_.window); }
    Result<void, std::string> plugin(std::string_view option) {
        result_.plugin = to_wide(VELL_TRY(value(option)));
        return {};
    }
    Result<void, std::string> save(std::string_view option) {
        result_.save = to_wide(VELL_TRY(value(option)));
        return {};
    }
    Result<void, std::string> host_version(std::string_view option) {
        result_.host.version_text = VELL_TRY(value(option));
        return {};
    }
    Result<void, std::string> step(std::string_view option);
    Result<void, std::string> application_type(std::string_view option);
    Result<void, std::string> api_version(std::string_view option);
    Result<void, std::string> idle(std::string_view option);
    Result<void, std::string> window_scale(std::string_view option);
    Result<void, std::string> fail_call(std::string_view option);

    static Result<void, std::string> set(bool& flag) {
        flag = true;
        return {};
    }

    const std::vector<std::u16string>& arguments_;
    std::size_t index_ = 0;
    std::optional<std::u16string> attached_value_; // of --option=value
    CommandLine result_;
};

const CommandLineReader::Option CommandLineReader::options[] = {
    {u"--file", &CommandLineReader::file},
    {u"--step", &CommandLineReader::step},
    {u"--list", &CommandLineReader::list},
    {u"--describe", &CommandLineReader::describe},
    {u"--help", &CommandLineReader::help},
    {u"--json", &CommandLineReader::json},
    {u"--raw", &CommandLineReader::raw},
    {u"--echo", &CommandLineReader::echo},
    {u"--timing", &CommandLineReader::timing},
    {u"--prompt", &CommandLineReader::prompt},
    {u"--reference", &CommandLineReader::reference},
    {u"--save", &CommandLineReader::save},
    {u"--check-leaks", &CommandLineReader::check_leaks},
    {u"--plugin", &CommandLineReader::plugin},
    {u"--app-type", &CommandLineReader::application_type},
    {u"--api-version", &CommandLineReader::api_version},
    {u"--host-version", &CommandLineReader::host_version},
    {u"--idle", &CommandLineReader::idle},
    {u"--window", &CommandLineReader::window},
    {u"--window-scale", &CommandLineReader::window_scale},
    {u"--fail-call", &CommandLineReader::fail_call},
};

Result<CommandLine, std::string> CommandLineReader::read() {
    bool options_ended = false;
    while (index_ < arguments_.size()) {
        const std::u16string& text = arguments_[index_++];
        if (options_ended || !is_option(text))
            VELL_TRY(choose(Action::Evaluate, text));
        else if (text == u"--")
            options_ended = true;
        else
            VELL_TRY(option(text == u"-h" ? u"--help" : text));
    }
    if (result_.save && result_.action != Action::Evaluate && result_.action != Action::Step)
        return Failure{std::string("--save goes with one calculation or one --step")};
    return std::move(result_);
}

Result<void, std::string> CommandLineReader::option(std::u16string text) {
    attached_value_.reset();
    if (const std::size_t equals = text.find(u'='); equals != text.npos) {
        attached_value_ = text.substr(equals + 1);
        text.erase(equals);
    }
    std::vector<std::u16string_view> known;
    for (const Option& entry : options) {
        known.push_back(entry.name);
        if (entry.name != text)
            continue;
        VELL_TRY((this->*entry.read)(utf8_from_utf16(text)));
        if (attached_value_)
            return Failure{utf8_from_utf16(text) + " takes no value"};
        return {};
    }
    std::string message = "there is no option " + utf8_from_utf16(text);
    if (const auto suggestion = closest_name(text, known))
        message += "; is " + utf8_from_utf16(*suggestion) + " meant?";
    return Failure{message};
}

Result<void, std::string> CommandLineReader::choose(Action action, std::u16string subject) {
    if (result_.action == Action::Help) { // on something
        if (action == Action::Evaluate && result_.subject.empty())
            result_.subject = std::move(subject);
        return {};
    }
    if (result_.action == Action::Evaluate && action == Action::Evaluate)
        return Failure{"one calculation at a time; \"" + utf8_from_utf16(subject) +
                       "\" is a second one (a calculation with blanks needs quotes in the shell)"};
    if (result_.action != Action::Statements)
        return Failure{std::string("a calculation, --file, --step, --list and --describe exclude "
                                   "each other")};
    result_.action = action;
    result_.subject = std::move(subject);
    return {};
}

Result<std::u16string, std::string> CommandLineReader::value(std::string_view option) {
    if (attached_value_)
        return *std::exchange(attached_value_, std::nullopt);
    if (index_ >= arguments_.size())
        return Failure{std::string(option) + " needs a value"};
    return arguments_[index_++];
}

Result<void, std::string> CommandLineReader::step(std::string_view option) {
    std::u16string name = VELL_TRY(value(option));
    VELL_TRY(choose(Action::Step, std::move(name)));
    while (index_ < arguments_.size() && !is_option(arguments_[index_]))
        result_.step_arguments.push_back(arguments_[index_++]);
    return {};
}

Result<void, std::string> CommandLineReader::application_type(std::string_view option) {
    const std::u16string text = VELL_TRY(value(option));
    result_.host.application_type = VELL_TRY(whole_number<std::uint8_t>(text, option, 0, 255));
    return {};
}

Result<void, std::string> CommandLineReader::api_version(std::string_view option) {
    const std::u16string text = VELL_TRY(value(option));
    constexpr std::int64_t largest = std::numeric_limits<std::int16_t>::max();
    result_.host.api_version = VELL_TRY(whole_number<std::int16_t>(text, option, 0, largest));
    return {};
}

// N[:LEVEL]
Result<void, std::string> CommandLineReader::idle(std::string_view option) {
    const std::u16string text = VELL_TRY(value(option));
    const std::size_t colon = std::min(text.size(), text.find(u':'));
    result_.idle_count =
        VELL_TRY(whole_number<std::uint32_t>(text.substr(0, colon), option, 0, 1'000'000));
    if (colon < text.size())
        result_.idle_level = VELL_TRY(
            whole_number<std::uint8_t>(text.substr(colon + 1), "the level of --idle", 0, 255));
    return {};
}

Result<void, std::string> CommandLineReader::window_scale(std::string_view option) {
    const std::u16string percent = VELL_TRY(value(option));
    result_.window_scale = VELL_TRY(whole_number<std::int32_t>(percent, option, 50, 400));
    return set(result_.window);
}

// N[:STATUS]
Result<void, std::string> CommandLineReader::fail_call(std::string_view option) {
    const std::u16string text = VELL_TRY(value(option));
    const std::size_t colon = std::min(text.size(), text.find(u':'));
    result_.fail_call =
        VELL_TRY(whole_number<std::uint64_t>(text.substr(0, colon), option, 1, 1'000'000'000));
    if (colon < text.size())
        result_.failure = static_cast<StandInFailure>(VELL_TRY(
            whole_number<std::int32_t>(text.substr(colon + 1), "the status of --fail-call", 1, 3)));
    return {};
}

} // namespace

Result<CommandLine, std::string> parse_command_line(const std::vector<std::u16string>& arguments) {
    return CommandLineReader(arguments).read();
}

} // namespace vell::console
