#include "src/host/entry/script_starter.h"

#include "src/host/bridge/host_data.h"
#include "src/host/entry/the_plugin.h"

namespace vell::host {

thread_local ScriptStarter::ServedMessage::Learned ScriptStarter::ServedMessage::learned_;

ScriptStarter::ServedMessage::ServedMessage(const CallRecord& record) : outer_(learned_) {
    learned_ = {record.start_script, record.unsafe != 0, outer_.depth + 1};
}

ScriptStarter::ServedMessage::~ServedMessage() {
    if (outer_.depth > 0)
        learned_ = outer_;
    else
        learned_.depth = 0;
}

std::int32_t ScriptStarter::version() const {
    return the_plugin().state.version();
}

bool ScriptStarter::is_callable() const {
    return !ServedMessage::learned_.unsafe_call && ServedMessage::learned_.start_script != nullptr;
}

Result<void> ScriptStarter::start(const dragdrop::Script& script, const std::u16string& parameter) {
    const StartScript start_script = ServedMessage::learned_.start_script;
    try {
        const Text file_name(script.file_name);
        const Text script_name(script.name);
        Data value;
        store_text(value.get(), Text(parameter));
        const fm::Errcode error =
            start_script(file_name.get(), script_name.get(),
                         static_cast<std::uint8_t>(ScriptControl::Pause), value.get());
        if (error != 0)
            return Failure{ErrorCode::HostFailure};
    } catch (const std::bad_alloc&) {
        return Failure{ErrorCode::OutOfMemory};
    } catch (const HostFailure&) {
        return Failure{ErrorCode::HostFailure};
    }
    return {};
}

void ScriptStarter::note(std::string_view line) {
    the_plugin().debug_log.add(line);
}

} // namespace vell::host
