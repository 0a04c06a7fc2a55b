#include "console/host/plugin_host.h"

#include "console/host/plugin_file.h"
#include "console/model/unicode.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vell::console {

namespace {

constexpr fm::Errcode unknown_error = -1;
constexpr std::uint64_t english_united_states = 1033; // Windows language ID

// The callbacks of the call record carry no context.
PluginHost* current_host = nullptr;

std::u16string copied(const char16_t* text) {
    return text ? text : u"";
}

RegisteredFunction copy_of(const StandInFunction& entry) {
    return {{entry.plugin_id, 4},
            entry.id,
            copied(entry.name),
            copied(entry.prototype),
            copied(entry.description),
            entry.min_args,
            entry.max_args,
            entry.flags,
            entry.body};
}

RegisteredStep copy_of(const StandInStep& entry) {
    return {{entry.plugin_id, 4},      entry.id,    copied(entry.name), copied(entry.definition),
            copied(entry.description), entry.flags, entry.body,         {}};
}

} // namespace

bool PluginIdentity::wants(std::size_t position) const {
    return position <= options.size() && options[position - 1] == u'Y';
}

PluginHost::PluginHost(PluginHostOptions options) : options_(std::move(options)) {
    if (current_host)
        throw std::logic_error("one PluginHost at a time");
    current_host = this;
    StandIn_SetIdentifiers(options_.session_id, options_.file_id);
}

PluginHost::~PluginHost() {
    if (running_)
        shut_down();
    if (library_)
        close_plugin_file(library_);
    current_host = nullptr;
}

Result<void, std::string> PluginHost::load(const std::wstring& path) {
    const PluginFile file = VELL_TRY(open_plugin_file(path));
    attach(file.entry, file.library);
    library_ = file.library;
    identity_.file_version = file.file_version;
    VELL_TRY(identify());
    return {};
}

void PluginHost::attach(host::EntryPoint entry, void* module) {
    record_ = {};
    record_.api_version = options_.api_version;
    record_.unused_id = -1;
    record_.entry_point = entry;
    record_.instance = reinterpret_cast<std::uintptr_t>(module);
    record_.start_script = &PluginHost::start_script;
    record_.current_environment = &PluginHost::current_environment;
}

Result<PluginIdentity, std::string> PluginHost::identify() {
    constexpr std::size_t options_length = 11;
    identity_.options = string_query(static_cast<std::uint8_t>(plugin::PluginString::Options));
    identity_.name = string_query(static_cast<std::uint8_t>(plugin::PluginString::Name));
    if (identity_.options.size() != options_length || identity_.options[4] != u'1')
        return Failure{"the plug-in's options string \"" + utf8_from_utf16(identity_.options) +
                       "\" is not one that the host understands"};
    if (identity_.name.empty())
        return Failure{std::string("the plug-in has no name")};
    return identity_;
}

void PluginHost::send(plugin::Message message, std::uint8_t parameter1, std::uint64_t parameter2,
                      std::uint64_t parameter3, std::uint64_t result) {
    if (!record_.entry_point)
        throw std::logic_error("no plug-in is loaded");
    record_.message = static_cast<std::uint8_t>(message);
    record_.parameter1 = parameter1;
    record_.parameter2 = parameter2;
    record_.parameter3 = parameter3;
    record_.result = result;
    const host::EntryPoint entry = record_.entry_point;
    entry(&record_);
}

std::int64_t PluginHost::start_up() {
    send(plugin::Message::StartUp, options_.application_type,
         reinterpret_cast<std::uintptr_t>(options_.version_text.c_str()));
    const auto answer = static_cast<std::int64_t>(record_.result);
    running_ = answer != plugin::startup_bad_version && answer != startup_do_not_enable;
    read_registrations();
    return answer;
}

void PluginHost::idle(std::uint8_t level) {
    send(plugin::Message::Idle, level, options_.session_id);
}

void PluginHost::shut_down() {
    send(plugin::Message::ShutDown);
    running_ = false;
    read_registrations();
}

void PluginHost::preferences() {
    send(plugin::Message::Preferences);
}

void PluginHost::session_shutdown(std::uint64_t session_id) {
    send(plugin::Message::SessionShutdown, 0, session_id);
}

void PluginHost::file_shutdown(std::uint64_t session_id, std::uint64_t file_id) {
    send(plugin::Message::FileShutdown, 0, session_id, file_id);
}

std::u16string PluginHost::string_query(std::uint8_t number, std::size_t capacity) {
    constexpr std::size_t guard_size = 64;
    constexpr char16_t guard = u'\uEEEE';
    std::u16string buffer(capacity + guard_size, guard);
    send(plugin::Message::StringQuery, number, english_united_states, capacity,
         reinterpret_cast<std::uintptr_t>(buffer.data()));
    if (buffer.find_first_not_of(guard, capacity) != buffer.npos)
        throw std::out_of_range("the plug-in wrote beyond the string buffer");
    buffer.resize(capacity);
    const std::size_t end = buffer.find(u'\0');
    if (end == buffer.npos)
        return {}; // left as it was, or without its terminator
    buffer.resize(end);
    return buffer;
}

void PluginHost::read_registrations() {
    functions_.clear();
    steps_.clear();
    definition_errors_.clear();
    for (std::uint32_t i = 0; i < StandIn_FunctionCount(); ++i)
        functions_.push_back(copy_of(*StandIn_FunctionAt(i)));
    for (std::uint32_t i = 0; i < StandIn_StepCount(); ++i) {
        RegisteredStep step = copy_of(*StandIn_StepAt(i));
        auto definition = read_step_definition(step.xml);
        if (definition)
            step.definition = std::move(definition).value();
        else
            definition_errors_.push_back("script step " + std::to_string(step.id) + " \"" +
                                         utf8_from_utf16(step.name) +
                                         "\": " + definition.error().message + "\n" +
                                         caret_display(step.xml, definition.error()));
        steps_.push_back(std::move(step));
    }
}

const RegisteredFunction* PluginHost::find_function(std::int16_t id) const {
    const auto found = std::find_if(functions_.begin(), functions_.end(),
                                    [id](const RegisteredFunction& f) { return f.id == id; });
    return found == functions_.end() ? nullptr : &*found;
}

const RegisteredFunction* PluginHost::find_function(std::u16string_view name) const {
    const auto found =
        std::find_if(functions_.begin(), functions_.end(), [name](const RegisteredFunction& f) {
            return equal_ignoring_case(f.name, name);
        });
    return found == functions_.end() ? nullptr : &*found;
}

const RegisteredStep* PluginHost::find_step(std::int16_t id) const {
    const auto found = std::find_if(steps_.begin(), steps_.end(),
                                    [id](const RegisteredStep& s) { return s.id == id; });
    return found == steps_.end() ? nullptr : &*found;
}

const RegisteredStep* PluginHost::find_step(std::u16string_view name) const {
    const auto found = std::find_if(steps_.begin(), steps_.end(), [name](const RegisteredStep& s) {
        return equal_ignoring_case(s.name, name);
    });
    return found == steps_.end() ? nullptr : &*found;
}

Result<HostData, std::string> PluginHost::call_body(std::int16_t id, fm::ExternalBody body,
                                                    std::span<const Value> vector) const {
    const HostEnvironment environment = make_environment();
    const HostDataVector parameters = make_data_vector();
    for (const Value& value : vector) {
        const HostData data = to_data(value);
        CallStatus status;
        FM_DataVect_PushBack(parameters.get(), data.get(), status);
        status.check();
    }
    HostData result = make_data();
    if (fail_call_ != 0)
        StandIn_FailCall(fail_call_, failure_);
    const fm::Errcode code = body(id, environment.get(), parameters.get(), result.get());
    if (fail_call_ != 0) {
        failed_call_ = StandIn_FailureDelivered() ? StandIn_FailedCallName() : "";
        StandIn_FailCall(0, failure_);
    }
    if (code != 0)
        return Failure{"the function ended with host error " + std::to_string(code)};
    return result;
}

Result<Value, std::string> PluginHost::call(const RegisteredFunction& function,
                                            std::span<const Value> arguments) const {
    const HostData result = VELL_TRY(call_body(function.id, function.body, arguments));
    return to_value(result.get());
}

CalcResult<Value> PluginHost::run_step(const RegisteredStep& step,
                                       std::span<const StepArgument> arguments) const {
    const std::vector<Value> vector = VELL_TRY(step_vector(step.definition, arguments));
    auto result = call_body(step.id, step.body, vector);
    if (!result)
        return Failure{CalcError{result.error()}};
    return step.definition.target ? to_value(result.value().get()) : Value();
}

void PluginHost::fail_calls(std::uint64_t n, StandInFailure failure) {
    fail_call_ = n;
    failure_ = failure;
    failed_call_.clear();
}

std::vector<ScriptRequest> PluginHost::take_script_requests() {
    const std::lock_guard lock(script_mutex_);
    return std::exchange(script_requests_, {});
}

fm::Errcode PluginHost::start_script(const fm::Text* file_name, const fm::Text* script_name,
                                     std::uint8_t control, const fm::Data* parameter) {
    // An exception must not travel through the plug-in.
    try {
        ScriptRequest request{file_name ? text_of(file_name) : u"",
                              script_name ? text_of(script_name) : u"", control,
                              parameter ? to_value(parameter) : Value()};
        const std::lock_guard lock(current_host->script_mutex_);
        current_host->script_requests_.push_back(std::move(request));
        return 0;
    } catch (const std::exception&) {
        return unknown_error;
    }
}

// Every environment of the console is the current one.
fm::Errcode PluginHost::current_environment(fm::ExprEnv*) {
    return 0;
}

} // namespace vell::console
