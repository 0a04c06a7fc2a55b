// What the plug-in knows between calls: what start-up learned about the host, and what
// VlFile_Control set.
//
// Written at start-up, at shutdown and by VlFile_Control, read by every call without a lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace vell::plugin {

inline constexpr std::string_view plugin_name = "Vell File Plug-In";
// The macros are the project's version, which CMakeLists.txt states.
inline constexpr std::string_view plugin_version = VELL_VERSION;
inline constexpr std::string_view plugin_name_and_version = "Vell File Plug-In " VELL_VERSION;
inline constexpr std::int32_t plugin_version_number = VELL_VERSION_MAJOR;
inline constexpr std::string_view auto_update_version = VELL_AUTO_UPDATE_VERSION;
inline constexpr std::int32_t build_number = VELL_BUILD;
inline constexpr std::string_view options_string = "V7fi1YnYYnn";
inline constexpr std::string_view crash_dump_start = "Crashdump Vell File Plug-In v" VELL_VERSION;
inline constexpr char plugin_id[] = "V7fi"; // the options string begins with it

// Application types as the host gives them at start-up.
enum class ApplicationType : std::uint8_t {
    ProAdvanced = 0,
    Pro = 1,
    Runtime = 2,
    Server = 3,
    WebServer = 4,
    Mobile = 5,
    Odbc = 6, // the process that serves ODBC and JDBC
    ServerSase = 7,
    WebServerFmse = 8,
    DataApi = 9,
};

// As the start banner has it. Only server hosts write one, so types that are none of them need no
// name: "Unknown FileMaker application type: " and the number.
std::string application_type_name(ApplicationType type);

// The hosts that log what they do. The second web engine counts as a web host only.
constexpr bool is_server_host(ApplicationType type) {
    return type == ApplicationType::Server || type == ApplicationType::WebServer ||
           type == ApplicationType::ServerSase;
}
constexpr bool is_web_host(ApplicationType type) {
    return type == ApplicationType::WebServer || type == ApplicationType::WebServerFmse;
}

// Hosts that somebody sits in front of. What a newer host brings counts as one; without a user it
// runs as a service, which has no visible window station.
constexpr bool has_user_interface(ApplicationType type) {
    switch (type) {
    case ApplicationType::Server:
    case ApplicationType::WebServer:
    case ApplicationType::Mobile:
    case ApplicationType::Odbc:
    case ApplicationType::ServerSase:
    case ApplicationType::WebServerFmse:
    case ApplicationType::DataApi:
        return false;
    default:
        return true;
    }
}

// The host's version as one number: major * 1000 + minor * 100 + patch ("Pro 19.5.1" is 19501,
// "Pro 13.0v2" is 13002); 0 when the text has no number. Parts beyond 999 below the thousands are
// cut to 999.
std::int32_t host_version_number(std::u16string_view version_text);

struct PluginState {
    std::int16_t api_version = 0;
    ApplicationType application_type = ApplicationType::Pro;
    // The host has a user interface, and what it shows can be seen. Decides about everything that
    // would show something.
    bool can_ask_user = true;
    std::int32_t host_version = 0;
    std::atomic<bool> idle_enabled = false;
    std::atomic<bool> server_log = false; // without it, calls and shutdown log nothing
    std::atomic<bool> call_lines = true;  // switched by VlFile_Control
    std::atomic<std::int32_t> registered_functions = 0;

    bool logs_events() const { return server_log && is_server_host(application_type); }
    bool logs_calls() const { return call_lines && logs_events(); }

    // A host that gives no version text is told by its interface.
    std::int32_t version() const {
        return host_version != 0 ? host_version : api_version >= 57 ? 16'000 : 12'000;
    }
};

// All functions disabled by VlFile_Control, until the same password is given.
class DisabledState {
  public:
    bool is_set() const { return set_; }
    bool disable(std::u16string_view password); // false when disabled already
    bool enable(std::u16string_view password);  // false when the password is another
    void reset();                               // enables, whatever the password

  private:
    std::atomic<bool> set_ = false;
    std::mutex mutex_;
    std::u16string password_; // guarded by mutex_; empty while enabled
};

} // namespace vell::plugin
