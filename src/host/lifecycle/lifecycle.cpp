#include "src/host/lifecycle/lifecycle.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/files/paths/defaults.h"
#include "src/host/bridge/late_entry_points.h"
#include "src/host/diagnostics/debug_log.h"
#include "src/host/diagnostics/log_file.h"
#include "src/host/lifecycle/licence.h"
#include "src/host/lifecycle/main_window.h"
#include "src/host/lifecycle/plugin_state.h"
#include "src/host/vocabulary/drop_functions.h"
#include "src/host/vocabulary/registration.h"
#include "src/windows/text.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace vell::host {
namespace {

constexpr std::int16_t lowest_api_version = 50;
constexpr std::int16_t highest_api_version = 255;
constexpr std::uint8_t highest_idle_level = 3;

constexpr std::string_view web_address = "https://vellfile.example/";
constexpr std::string_view help_address = "https://vellfile.example/help/";

bool on_server_host() {
    return is_server_host(plugin_state().application_type);
}

// Services and scheduled tasks have a window station of their own, whose windows nobody sees.
bool is_window_station_visible() {
    USEROBJECTFLAGS flags{};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                     nullptr) &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

// What functions have set goes with the plug-in, and the library may stay in memory between two
// start-ups.
void forget_earlier_calls() {
    disabled_state().reset();
    files::defaults().reset();
    debug_log().switch_off();
    static_cast<void>(debug_log().take());
    plugin_state().call_lines = true;
}

void log_start_banner() {
    const PluginState& state = plugin_state();
    log_line(std::string(41, '*'));
    log_line(std::string(plugin_name_and_version) + " started running under " +
             application_type_name(state.application_type) + ".");
    log_line("Running as a 64 bit Plug-in.");
    log_line("Internal FM App version: " + to_text(std::int64_t{state.api_version}));
    if (build_number != 0)
        log_line("Plug-in build number: " + to_text(std::int64_t{build_number}));
}

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

std::int64_t start_up(std::int16_t api_version, std::uint8_t application_type,
                      std::u16string_view version_text) {
    PluginState& state = plugin_state();
    state.api_version = api_version;
    state.application_type = static_cast<ApplicationType>(application_type);
    state.can_ask_user = has_user_interface(state.application_type) && is_window_station_visible();
    state.host_version = host_version_number(version_text);
    state.registered_functions = 0;
    forget_earlier_calls();
    if (on_server_host())
        log_start_banner();
    if (api_version < lowest_api_version || api_version > highest_api_version)
        return startup_bad_version;

    find_late_entry_points(api_version);
    const LicenceStart licence = licence_checks().at_startup(on_server_host());
    state.server_log = licence.log_calls;
    if (!licence.passed) {
        if (on_server_host())
            log_line("Startup phase failed");
        return startup_accepted; // loaded, with no function
    }
    const ErrorCode problem = register_all();
    if (problem != ErrorCode::Ok)
        log_line(std::string(plugin_name) +
                 ": startup problem, errorcode = " + to_text(std::int64_t{number(problem)}));
    state.idle_enabled = true;
    if (on_server_host())
        log_line("Plug-in startup completed.");
    return startup_accepted;
}

void idle(std::uint8_t level) {
    if (!plugin_state().idle_enabled || level > highest_idle_level)
        return;
    idle_drops();
}

void shut_down() {
    PluginState& state = plugin_state();
    state.idle_enabled = false;
    if (state.logs_events())
        log_line("Plug-in shutdown started.");
    shut_down_drops();
    const Unregistration outcome = unregister_all();
    if (!state.logs_events())
        return;
    if (outcome.error != ErrorCode::Ok)
        log_line("Plug-in shutdown error. Errorcode = " +
                 to_text(std::int64_t{number(outcome.error)}));
    if (outcome.remaining != 0)
        log_line("Plug-in shutdown PROBLEM: count of unregistered functions incorrect: " +
                 to_text(std::int64_t{outcome.functions}));
    else
        log_line("Plug-in shutdown completed.");
}

void show_about_box() {
    if (!plugin_state().can_ask_user)
        return;
    const std::string text = std::string(plugin_name_and_version) + " (build " +
                             to_text(std::int64_t{build_number}) +
                             ")\n\nFiles and folders for FileMaker solutions.";
    MessageBoxW(main_window(), to_wide(utf16_from_utf8(text)).c_str(), L"About Vell File Plug-In",
                MB_OK | MB_ICONINFORMATION);
}

void session_shut_down(fm::PtrType session_id) {
    if (plugin_state().logs_events())
        log_line("Session shutdown completed. (sessionID = " + to_text(session_id) + ")");
}

void file_shut_down(fm::PtrType session_id, fm::PtrType file_id) {
    if (plugin_state().logs_events())
        log_line("File shutdown completed. (sessionID = " + to_text(session_id) +
                 " fileID = " + to_text(file_id) + ")");
}

void answer_string_query(std::uint8_t string_number, std::span<char16_t> buffer) {
    if (buffer.empty())
        return;
    const std::string text = plugin_string(string_number);
    const std::size_t length = std::min(text.size(), buffer.size() - 1);
    std::copy_n(text.begin(), length, buffer.begin());
    buffer[length] = u'\0';
}

} // namespace vell::host
