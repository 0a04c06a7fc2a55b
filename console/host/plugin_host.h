// Drives a plug-in the way the host does: loads it, sends it messages through the call record,
// collects what it registers, and calls its functions and script steps.
//
// One PluginHost may exist at a time, since a plug-in and the stand-in library keep process-wide
// state. call() may be used by several threads at once; everything else belongs to one thread.
#pragma once

#include "console/calc/step_definition.h"
#include "console/calc/value.h"
#include "console/fmwrapper/control.h"
#include "console/host/host_objects.h"
#include "src/base/result.h"
#include "src/host/bridge/call_record.h"
#include "src/plugin/messages.h"

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace vell::console {

struct PluginHostOptions {
    std::uint8_t application_type = 1;
    std::int16_t api_version = 67;
    std::u16string version_text = u"Pro 19.5.1";
    std::uint64_t session_id = 1;
    std::uint64_t file_id = 1;
};

struct RegisteredFunction {
    std::string plugin_id; // four characters
    std::int16_t id = 0;
    std::u16string name;
    std::u16string prototype;
    std::u16string description; // empty when registered without one
    int min_arguments = 0;
    int max_arguments = 0; // -1: any number
    std::uint32_t flags = 0;
    fm::ExternalBody body = nullptr;
};

struct RegisteredStep {
    std::string plugin_id;
    std::int16_t id = 0;
    std::u16string name;
    std::u16string xml;
    std::u16string description;
    std::uint32_t flags = 0;
    fm::ExternalBody body = nullptr;
    StepDefinition definition;
};

// A script that the plug-in asked the host to start.
struct ScriptRequest {
    std::u16string file_name;
    std::u16string script_name;
    std::uint8_t control = 0; // a host::ScriptControl
    Value parameter;
};

// What the plug-in says of itself in answer to string queries.
struct PluginIdentity {
    std::u16string name;
    std::u16string options;
    std::string file_version; // empty for an attached plug-in

    bool wants(std::size_t position) const; // 'Y' in the options string, positions from 1
    bool wants_start_and_shutdown() const { return wants(8); }
    bool wants_idle() const { return wants(9); }
    bool wants_session_shutdown() const { return wants(10); }
};

// An answer to start-up beside those that the plug-in itself gives.
inline constexpr std::int64_t startup_do_not_enable = -2;

class PluginHost {
  public:
    explicit PluginHost(PluginHostOptions options = {});
    ~PluginHost(); // shuts the plug-in down if it is running, and unloads it
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    // Loads a plug-in file with the host's checks; the error is a message.
    Result<void, std::string> load(const std::wstring& path);
    // Uses an entry point that is in the process already.
    void attach(host::EntryPoint entry, void* module);
    // Asks for name and options and checks them; load() has done so.
    Result<PluginIdentity, std::string> identify();
    const PluginIdentity& identity() const { return identity_; }
    const PluginHostOptions& options() const { return options_; }

    std::int64_t start_up(); // the plug-in's answer
    void idle(std::uint8_t level = 0);
    // Whether later messages say that they do not come on the host's main thread.
    void set_unsafe(bool unsafe) { record_.unsafe = unsafe ? 1 : 0; }
    void shut_down();
    void preferences();
    void session_shutdown(std::uint64_t session_id);
    void file_shutdown(std::uint64_t session_id, std::uint64_t file_id);
    // The text in a buffer of `capacity` units, terminator included. Throws when the plug-in writes
    // beyond the buffer.
    std::u16string string_query(std::uint8_t number, std::size_t capacity = 1024);

    // The registrations as they stood after the last start-up or shutdown.
    const std::vector<RegisteredFunction>& functions() const { return functions_; }
    const std::vector<RegisteredStep>& steps() const { return steps_; }
    // Definitions of steps that the host does not accept; empty when all is well.
    const std::vector<std::string>& definition_errors() const { return definition_errors_; }
    const RegisteredFunction* find_function(std::int16_t id) const;
    const RegisteredFunction* find_function(std::u16string_view name) const; // the first of a name
    const RegisteredStep* find_step(std::int16_t id) const;
    const RegisteredStep* find_step(std::u16string_view name) const; // any letter case

    // Calls a body with an environment of its own. The error is a message; a body that returns a
    // nonzero code has failed. Argument counts are not checked.
    Result<Value, std::string> call(const RegisteredFunction& function,
                                    std::span<const Value> arguments) const;
    // The result as the host's object, with all that a Value does not hold, such as text styles.
    Result<HostData, std::string> call_body(std::int16_t id, fm::ExternalBody body,
                                            std::span<const Value> vector) const;
    // Runs a step; a value is dropped when the step has no target.
    CalcResult<Value> run_step(const RegisteredStep& step,
                               std::span<const StepArgument> arguments) const;

    // Each later call of a body meets a failure at its n-th host call; 0 ends this.
    void fail_calls(std::uint64_t n, StandInFailure failure = StandInFailure::Allocation);
    // The failure was met by the last body that ended.
    bool failure_delivered() const { return !failed_call_.empty(); }
    const std::string& failed_call() const { return failed_call_; } // the FM_ function that it met

    std::vector<ScriptRequest> take_script_requests();

  private:
    void send(plugin::Message message, std::uint8_t parameter1 = 0, std::uint64_t parameter2 = 0,
              std::uint64_t parameter3 = 0, std::uint64_t result = 0);
    void read_registrations();
    static fm::Errcode start_script(const fm::Text* file_name, const fm::Text* script_name,
                                    std::uint8_t control, const fm::Data* parameter);
    static fm::Errcode current_environment(fm::ExprEnv* environment);

    PluginHostOptions options_;
    host::CallRecord record_{}; // the plug-in keeps its address between messages
    void* library_ = nullptr;   // to be freed; null when attached
    bool running_ = false;
    PluginIdentity identity_;
    std::vector<RegisteredFunction> functions_;
    std::vector<RegisteredStep> steps_;
    std::vector<std::string> definition_errors_;
    std::uint64_t fail_call_ = 0;
    StandInFailure failure_ = StandInFailure::Allocation;
    mutable std::string failed_call_; // written only while failures are asked for
    std::mutex script_mutex_;
    std::vector<ScriptRequest> script_requests_;
};

} // namespace vell::console
