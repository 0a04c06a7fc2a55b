// vellhost: loads the plug-in as the host does and runs calculations and script steps on it.
#include "console/host/command_line.h"
#include "console/host/container_file.h"
#include "console/host/help_page.h"
#include "console/host/hints.h"
#include "console/host/host_window.h"
#include "console/host/interactive.h"
#include "console/host/reference_pages.h"
#include "console/host/report.h"
#include "console/host/session.h"
#include "console/host/terminal.h"
#include "console/host/wide_text.h"
#include "console/model/unicode.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

namespace vell::console {

namespace {

enum ExitCode { exit_fine = 0, exit_error_result = 1, exit_error = 2, exit_leaks = 3 };

std::wstring beside_this_program(const wchar_t* name) {
    wchar_t path[MAX_PATH * 4];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH * 4);
    return std::filesystem::path(std::wstring(path, length)).replace_filename(name);
}

// One run of the program on a plug-in that has been started.
class Run {
  public:
    Run(const CommandLine& command_line, PluginHost& host, HostWindow* window)
        : command_line_(command_line), host_(host), window_(window), session_(host),
          pages_(host, command_line.reference.value_or(beside_this_program(L"reference"))) {}

    ExitCode perform();
    void hold_open();

  private:
    void statements(std::istream& stream, const std::string& name);
    void statement(std::u16string_view text);
    void one_calculation();
    void one_step();
    void describe();
    void help();
    void show(const CalcResult<Value>& result, std::u16string_view source);
    void show_error(const CalcError& error, std::u16string_view source);
    void save(const Value& value);
    void show_in_window(const Value& value);
    void after_statement();
    void tell_time(std::chrono::steady_clock::duration taken) const;
    void tell_progress();
    void echo(std::u16string_view text);
    void no_such_name();
    void show_started_scripts();
    void worsen(ExitCode code) { exit_code_ = std::max(exit_code_, code); }

    const CommandLine& command_line_;
    PluginHost& host_;
    HostWindow* window_; // null without one
    Session session_;
    ReferencePages pages_;
    std::string source_name_; // of statements, for errors
    std::size_t line_ = 1;
    std::chrono::steady_clock::time_point progress_told_ = std::chrono::steady_clock::now();
    ExitCode exit_code_ = exit_fine;
};

// As the host writes the path of an open solution.
std::u16string file_path_of(const std::u16string& name) {
    const std::filesystem::path path = std::filesystem::absolute(std::filesystem::path(name));
    const std::u16string generic = path.generic_u16string();
    return (generic.starts_with(u"//") ? u"file:" : u"file:/") + generic;
}

void send_idle_messages(const CommandLine& command_line, PluginHost& host) {
    if (!host.identity().wants_idle())
        return;
    for (std::uint32_t i = 0; i < command_line.idle_count; ++i) {
        pump_window_messages();
        host.idle(command_line.idle_level);
    }
}

ExitCode Run::perform() {
    session_.watch_calls([this](const RegisteredFunction& function, std::span<const Value> given) {
        if (!given.empty() && given.front().text())
            write_error(pages_.unknown_switches(function.name, *given.front().text()));
    });
    send_idle_messages(command_line_, host_);
    host_.fail_calls(command_line_.fail_call, command_line_.failure);
    switch (command_line_.action) {
    case Action::Evaluate:
        one_calculation();
        break;
    case Action::Step:
        one_step();
        break;
    case Action::File: {
        const std::string name = utf8_from_utf16(command_line_.subject);
        std::ifstream file(std::filesystem::path(command_line_.subject), std::ios::binary);
        if (file) {
            session_.set_current_file(file_path_of(command_line_.subject));
            statements(file, name);
        } else {
            write_error("vellhost: there is no readable file " + name + "\n");
            worsen(exit_error);
        }
        break;
    }
    case Action::List:
        write_output(registration_list(host_));
        break;
    case Action::Describe:
        describe();
        break;
    case Action::Help:
        help();
        break;
    case Action::Statements:
        if (input_is_console() || command_line_.prompt)
            run_prompt(host_, pages_, session_,
                       [this](std::u16string_view text) { statement(text); });
        else
            statements(standard_input(), "standard input");
        break;
    }
    return exit_code_;
}

void Run::statements(std::istream& stream, const std::string& name) {
    source_name_ = name;
    for (line_ = 1; const auto text = read_line(stream); ++line_) {
        if (command_line_.echo)
            echo(*text);
        statement(*text);
        tell_progress();
    }
}

// A comment is a heading there.
void Run::echo(std::u16string_view text) {
    constexpr std::u16string_view comment = u"//";
    if (text.starts_with(comment))
        write_output("\n" + utf8_from_utf16(text.substr(comment.size() + 1)) + "\n");
    else if (!text.empty())
        write_output("> " + utf8_from_utf16(text) + "\n");
}

// Once in a while, for a person who waits.
void Run::tell_progress() {
    constexpr std::chrono::seconds interval(2);
    const auto now = std::chrono::steady_clock::now();
    if (!error_is_console() || now - progress_told_ < interval)
        return;
    progress_told_ = now;
    write_error(source_name_ + ": line " + std::to_string(line_) + "\n");
}

void Run::tell_time(std::chrono::steady_clock::duration taken) const {
    const std::chrono::duration<double, std::milli> milliseconds(taken);
    char text[64];
    std::snprintf(text, sizeof text, "%10.3f ms  line %zu\n", milliseconds.count(), line_);
    write_error(text);
}

void Run::statement(std::u16string_view text) {
    const auto start = std::chrono::steady_clock::now();
    const CalcResult<StatementOutcome> outcome = session_.run(text);
    if (command_line_.timing && (!outcome || outcome->kind != StatementKind::Empty))
        tell_time(std::chrono::steady_clock::now() - start);
    if (!outcome) {
        show_error(outcome.error(), text);
    } else if (outcome->kind == StatementKind::Assign) {
        if (command_line_.json)
            write_output(json_result(line_, outcome->value));
    } else if (outcome->kind != StatementKind::Empty) {
        show(outcome->value, text);
    }
    after_statement();
}

void Run::one_calculation() {
    const auto start = std::chrono::steady_clock::now();
    const CalcResult<Value> value = session_.evaluate(command_line_.subject);
    if (command_line_.timing)
        tell_time(std::chrono::steady_clock::now() - start);
    show(value, command_line_.subject);
    after_statement();
}

void Run::one_step() {
    std::vector<StepArgument> arguments;
    for (const std::u16string& calculation : command_line_.step_arguments) {
        arguments.push_back({});
        if (calculation.find_first_not_of(u' ') == calculation.npos)
            continue;
        CalcResult<Value> value = session_.evaluate(calculation);
        if (!value)
            return show_error(value.error(), calculation);
        arguments.back().value = std::move(value).value();
    }
    show(session_.run_step(command_line_.subject, arguments), {});
    after_statement();
}

void Run::describe() {
    const std::string text = description(host_, command_line_.subject);
    if (text.empty())
        return no_such_name();
    write_output(text + pages_.switches_and_codes(command_line_.subject));
}

void Run::help() {
    const std::string page = pages_.page(command_line_.subject);
    if (page.empty())
        return no_such_name();
    write_output(page);
}

void Run::no_such_name() {
    write_error("vellhost: " + pages_.no_page(command_line_.subject));
    worsen(exit_error);
}

void Run::show(const CalcResult<Value>& result, std::u16string_view source) {
    if (!result)
        return show_error(result.error(), source);
    const Value& value = *result;
    if (is_error_result(value))
        worsen(exit_error_result);
    write_output(command_line_.json ? json_result(line_, value)
                                    : plain_result(value, command_line_.raw));
    write_error(hint_on(source, value));
    if (command_line_.save)
        save(value);
    if (window_)
        show_in_window(value);
}

void Run::show_error(const CalcError& error, std::u16string_view source) {
    if (command_line_.json)
        write_output(json_error(line_, source, error));
    else
        write_error(plain_error(source_name_, line_, source, error));
    worsen(exit_error);
}

void Run::save(const Value& value) {
    const auto container = std::dynamic_pointer_cast<const HostContainer>(value.container());
    if (!container) {
        write_error("vellhost: --save needs a container, and the result is a " +
                    std::string(type_name(value.type())) + "\n");
        return worsen(exit_error);
    }
    const auto saved = save_main_stream(container->get(), *command_line_.save);
    if (!saved) {
        write_error("vellhost: " + saved.error() + "\n");
        worsen(exit_error);
    }
}

// As a layout shows a container; what is no picture is left out.
void Run::show_in_window(const Value& value) {
    const auto container = std::dynamic_pointer_cast<const HostContainer>(value.container());
    if (!container)
        return;
    if (const auto stream = main_stream_of(container->get()))
        window_->show_picture(stream->bytes, container->file_name());
}

void Run::after_statement() {
    send_idle_messages(command_line_, host_);
    if (host_.failure_delivered()) {
        write_error("vellhost: the failure struck " + host_.failed_call() + "\n");
        host_.fail_calls(command_line_.fail_call, command_line_.failure);
    }
    show_started_scripts();
}

void Run::show_started_scripts() {
    for (const ScriptRequest& request : host_.take_script_requests())
        write_error(script_request_text(request));
}

void Run::hold_open() {
    constexpr DWORD idle_interval = 250; // milliseconds
    while (window_->is_open()) {
        MsgWaitForMultipleObjectsEx(0, nullptr, idle_interval, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        pump_window_messages();
        if (host_.identity().wants_idle())
            host_.idle(command_line_.idle_level);
        show_started_scripts();
    }
}

ExitCode failed(const std::string& message) {
    write_error("vellhost: " + message + "\n");
    return exit_error;
}

ExitCode run_started(const CommandLine& command_line, PluginHost& host) {
    if (!host.definition_errors().empty()) {
        for (const std::string& error : host.definition_errors())
            write_error("vellhost: the host does not accept the definition of " + error);
        return exit_error;
    }
    std::optional<HostWindow> window;
    if (command_line.window) {
        window.emplace(command_line.host, command_line.window_scale);
        if (!window->is_open())
            return failed("there is no display to show a window on");
    }
    Run run(command_line, host, window ? &*window : nullptr);
    const ExitCode code = run.perform();
    if (window)
        run.hold_open();
    return code;
}

ExitCode run(const CommandLine& command_line) {
    PluginHost host(command_line.host);
    if (const auto loaded =
            host.load(command_line.plugin.value_or(beside_this_program(L"VellFile.fmx64")));
        !loaded)
        return failed(loaded.error());
    ExitCode code = exit_fine;
    if (host.identity().wants_start_and_shutdown()) {
        const std::int64_t answer = host.start_up();
        if (answer == plugin::startup_bad_version)
            return failed("the plug-in does not run on API version " +
                          std::to_string(command_line.host.api_version));
        if (answer == startup_do_not_enable)
            return failed("the plug-in does not want to be enabled");
        code = run_started(command_line, host);
        if (host.identity().wants_session_shutdown()) {
            host.file_shutdown(command_line.host.session_id, command_line.host.file_id);
            host.session_shutdown(command_line.host.session_id);
        }
        host.shut_down();
    }
    // Looked at before the plug-in is unloaded: what it frees later, the host would not see.
    if (const std::string leaks = leak_list(); command_line.check_leaks && !leaks.empty()) {
        write_error("vellhost: host objects are left over\n" + leaks);
        code = exit_leaks;
    }
    return code;
}

} // namespace

} // namespace vell::console

int wmain(int count, wchar_t** arguments) {
    using namespace vell::console;
    std::vector<std::u16string> texts;
    for (int i = 1; i < count; ++i)
        texts.push_back(vell::to_utf16(arguments[i]));
    const auto command_line = parse_command_line(texts);
    if (!command_line)
        return failed(command_line.error() + "\nvellhost --help tells how it is used");
    if (command_line->action == Action::Help && command_line->subject.empty()) {
        write_output(help_page);
        return exit_fine;
    }
    try {
        const ExitCode code = run(*command_line);
        if (const std::uint32_t error = output_error())
            return failed("standard output cannot be written, Windows error " +
                          std::to_string(error));
        return code;
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
