#include "src/host/vocabulary/drop_functions.h"

#include "src/dragdrop/drag_and_drop.h"
#include "src/host/bridge/host_data.h"
#include "src/host/diagnostics/debug_log.h"
#include "src/host/lifecycle/plugin_state.h"
#include "src/windows/dragdrop/drop_windows.h"
#include "src/windows/system.h"

namespace vell::host {
namespace {

using dragdrop::DragAndDrop;
using dragdrop::Script;

class HostOfDrops : public dragdrop::DropHost {
  public:
    std::int32_t version() const override {
        const PluginState& state = plugin_state();
        if (state.host_version != 0)
            return state.host_version;
        // A host that gives no version text is told by its interface.
        return state.api_version >= 57 ? 16'000 : 12'000;
    }

    bool is_callable() const override {
        const PluginState& state = plugin_state();
        return !state.unsafe_call && state.start_script != nullptr;
    }

    Result<void> start(const Script& script, const std::u16string& parameter) override {
        const StartScript start_script = plugin_state().start_script;
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

    void note(std::string_view line) override { debug_log().add(line); }
};

DragAndDrop& drops() {
    // Never destroyed, as the windows that it serves.
    static DragAndDrop& instance =
        *new DragAndDrop(*new HostOfDrops, windows::drop_windows(), windows::system().files());
    return instance;
}

} // namespace

Result<void> drag_and_drop(params::Call& call, System&) {
    return drops().drag_and_drop(call);
}

Result<void> stop_drop_handlers(params::Call& call, System&) {
    return drops().stop_all(call);
}

void idle_drops() {
    drops().idle();
}

void shut_down_drops() {
    drops().shut_down();
}

} // namespace vell::host
