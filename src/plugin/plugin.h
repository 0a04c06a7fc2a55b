// The plug-in, whatever host it runs in: what it keeps between calls, and what it does with the
// host's messages and calls.
#pragma once

#include "src/dragdrop/drag_and_drop.h"
#include "src/plugin/debug_log.h"
#include "src/plugin/host.h"
#include "src/plugin/licence.h"
#include "src/plugin/messages.h"
#include "src/plugin/plugin_state.h"
#include "src/policy/guard.h"
#include "src/system/system.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace vell::plugin {

struct Unregistration; // src/plugin/vocabulary/registration.h

class Plugin {
  public:
    // Under a guard the system is the guarded one.
    Plugin(Host& host, System& of_process, dragdrop::DragAndDrop& drag_and_drop,
           policy::Guard* of_administrator = nullptr)
        : system(of_process), drops(drag_and_drop), guard(of_administrator),
          debug_log(of_process.logs()), host_(host) {}

    // Message 0. Registers the vocabulary; the answer is startup_accepted, or startup_bad_version
    // for a host outside API 50 to 255. `version_text` is empty when the host gives none.
    std::int64_t start_up(std::int16_t api_version, std::uint8_t application_type,
                          std::u16string_view version_text);

    void idle(std::uint8_t level);
    // False where the library must stay in memory: the policy's log is still being written.
    bool shut_down();
    void show_about_box();
    void session_shut_down(std::uint64_t session_id);
    void file_shut_down(std::uint64_t session_id, std::uint64_t file_id);

    // Checks, runs the body of the ID and leaves exactly one value in the call. Nothing is thrown.
    // Returns 0 when the outcome, a failure included, stands in the result; the code of the failure
    // when the host could not even take that.
    std::int16_t serve(std::int16_t id, HostCall& call);

    // The host's main window, by its class or else the one in front; null when there is neither.
    void* main_window();

    // The libraries inside with their versions, "Name 1.2.3" each.
    std::string library_versions(std::string_view separator);

    // A line of the permanent log: web hosts have one of their own.
    void log(std::string_view line);
    std::function<void(std::string_view)> log_line();

    System& system;
    dragdrop::DragAndDrop& drops;
    policy::Guard* const guard; // the administrator's policy; null without one
    PluginState state;
    DisabledState disabled;
    DebugLog debug_log;
    const LicenceChecks* licence = &own_licence_checks;

  private:
    void forget_earlier_calls();
    void log_start_banner();
    void log_shutdown(const Unregistration& outcome);
    ErrorCode refusal() const;
    void log_call(std::string_view event, std::int16_t id);
    struct Entry;
    static std::optional<Entry> find_entry(std::int16_t id);
    ErrorCode outcome_of(const Entry& entry, HostCall& call);
    ErrorCode guarded_outcome_of(const Entry& entry, HostCall& call, policy::CallScope& scope);
    std::int16_t answer(const Entry& entry, HostCall& call);
    std::int16_t serve_logged(std::int16_t id, HostCall& call);

    Host& host_;
};

// Message 7: a zero-terminated text of the plug-in in the host's buffer, cut to its capacity (which
// counts the terminator); the empty text for a number that means nothing.
void answer_string_query(std::uint8_t string_number, std::span<char16_t> buffer);

} // namespace vell::plugin
