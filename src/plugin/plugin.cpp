// What each message does.
#include "src/plugin/plugin.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/files/paths/defaults.h"
#include "src/plugin/main_window.h"
#include "src/plugin/vocabulary/registration.h"

#include <algorithm>
#include <string>

namespace vell::plugin {
namespace {

constexpr std::int16_t lowest_api_version = 50;
constexpr std::int16_t highest_api_version = 255;
constexpr std::uint8_t highest_idle_level = 3;

constexpr std::string_view web_address = "https://vellfile.example/";
// The host puts the number of a function or step behind it, and the reference's page there leads
// on.
constexpr std::string_view help_address = "https://vellfile.example/reference/id/?";

std::string description() {
    return std::string(plugin_name_and_version) + ". " +
           "This plug-in (for FileMaker 16 to 19.5) adds steps and functions for file and folder "
           "manipulation. \rSee the plug-in documentation or visit our site: \r" +
           std::string(web_address);
}

std::string plugin_string(std::uint8_t number) {
    switch (static_cast<PluginString>(number)) {
    case PluginString::Name:
        return std::string(plugin_name);
    case PluginString::Description:
        return description();
    case PluginString::Options:
        return std::string(options_string);
    case PluginString::Help:
        return std::string(help_address);
    }
    return {};
}

} // namespace

// What functions have set goes with the plug-in, and the library may stay in memory between two
// start-ups.
void Plugin::forget_earlier_calls() {
    disabled.reset();
    files::defaults().reset();
    debug_log.switch_off();
    static_cast<void>(debug_log.take());
    state.call_lines = true;
}

void Plugin::log_start_banner() {
    log(std::string(41, '*'));
    log(std::string(plugin_name_and_version) + " started running under " +
        application_type_name(state.application_type) + ".");
    log("Running as a 64 bit Plug-in.");
    log("Internal FM App version: " + to_text(std::int64_t{state.api_version}));
    if (build_number != 0)
        log("Plug-in build number: " + to_text(std::int64_t{build_number}));
    log("Libraries: " + library_versions(", "));
}

std::string Plugin::library_versions(std::string_view separator) {
    std::string text;
    for (const LinkedLibrary& library : system.linked_libraries()) {
        if (!text.empty())
            text += separator;
        text += library.name + ' ' + library.version;
    }
    return text;
}

std::int64_t Plugin::start_up(std::int16_t api_version, std::uint8_t application_type,
                              std::u16string_view version_text) {
    state.api_version = api_version;
    state.application_type = static_cast<ApplicationType>(application_type);
    state.can_ask_user =
        has_user_interface(state.application_type) && system.desktop().is_visible();
    state.host_version = host_version_number(version_text);
    state.registered_functions = 0;
    forget_earlier_calls();
    const bool on_server_host = is_server_host(state.application_type);
    if (on_server_host)
        log_start_banner();
    if (guard && guard->policy().allows_nothing)
        log("The policy allows nothing, for it cannot be read: " + guard->policy().problem);
    if (api_version < lowest_api_version || api_version > highest_api_version)
        return startup_bad_version;

    if (guard)
        guard->start(log_line()); // until shut_down, which a host sends to whom it has accepted
    host_.meet(api_version);
    const LicenceStart started = licence->at_startup(on_server_host);
    state.server_log = started.log_calls;
    if (!started.passed) {
        if (on_server_host)
            log("Startup phase failed");
        return startup_accepted; // loaded, with no function
    }
    const ErrorCode problem = register_all(host_, state, debug_log);
    if (problem != ErrorCode::Ok)
        log(std::string(plugin_name) +
            ": startup problem, errorcode = " + to_text(std::int64_t{number(problem)}));
    state.idle_enabled = true;
    if (on_server_host)
        log("Plug-in startup completed.");
    return startup_accepted;
}

void Plugin::idle(std::uint8_t level) {
    if (!state.idle_enabled || level > highest_idle_level)
        return;
    drops.idle();
}

void Plugin::log_shutdown(const Unregistration& outcome) {
    if (outcome.error != ErrorCode::Ok)
        log("Plug-in shutdown error. Errorcode = " + to_text(std::int64_t{number(outcome.error)}));
    if (outcome.remaining != 0)
        log("Plug-in shutdown PROBLEM: count of unregistered functions incorrect: " +
            to_text(std::int64_t{outcome.functions}));
    else
        log("Plug-in shutdown completed.");
}

bool Plugin::shut_down() {
    state.idle_enabled = false;
    if (state.logs_events())
        log("Plug-in shutdown started.");
    drops.shut_down();
    const Unregistration outcome = unregister_all(host_, state);
    const bool is_log_written = !guard || guard->stop();
    if (state.logs_events())
        log_shutdown(outcome);
    return is_log_written;
}

void Plugin::show_about_box() {
    if (!state.can_ask_user)
        return;
    const std::string text = std::string(plugin_name_and_version) + " (build " +
                             to_text(std::int64_t{build_number}) +
                             ")\n\nFiles and folders for FileMaker solutions.";
    system.desktop().inform(main_window(), u"About Vell File Plug-In", utf16_from_utf8(text));
}

void Plugin::session_shut_down(std::uint64_t session_id) {
    if (state.logs_events())
        log("Session shutdown completed. (sessionID = " + to_text(session_id) + ")");
}

void Plugin::file_shut_down(std::uint64_t session_id, std::uint64_t file_id) {
    if (state.logs_events())
        log("File shutdown completed. (sessionID = " + to_text(session_id) +
            " fileID = " + to_text(file_id) + ")");
}

void* Plugin::main_window() {
    return system.desktop().main_window(main_window_class(state.api_version));
}

void Plugin::log(std::string_view line) {
    log_line()(line);
}

// Needs nothing of the plug-in, which a thread of the policy's may outlive.
std::function<void(std::string_view)> Plugin::log_line() {
    const bool on_web_host = is_web_host(state.application_type);
    const bool has_log_folder = on_web_host || is_server_host(state.application_type);
    const auto channel = on_web_host ? files::LogChannel::Web : files::LogChannel::Server;
    const auto folder = has_log_folder ? files::LogFolder::OfServer : files::LogFolder::Own;
    return [&logs = system.logs(), channel, folder](std::string_view line) {
        logs.append(channel, folder, plugin_name, line);
    };
}

void answer_string_query(std::uint8_t string_number, std::span<char16_t> buffer) {
    if (buffer.empty())
        return;
    const std::string text = plugin_string(string_number);
    const std::size_t length = std::min(text.size(), buffer.size() - 1);
    std::copy_n(text.begin(), length, buffer.begin());
    buffer[length] = u'\0';
}

} // namespace vell::plugin
