#include "src/host/entry/the_plugin.h"

#include "src/host/entry/host_vocabulary.h"
#include "src/windows/dragdrop/drop_windows.h"
#include "src/windows/process/crash_report.h"
#include "src/windows/system.h"

namespace vell::host {
namespace {

void log_crash(std::string_view line) {
    if (is_server_host(the_plugin().state.application_type))
        the_plugin().log(line);
}

// Never destroyed, as the windows that it serves.
dragdrop::DragAndDrop& drops() {
    static auto& instance = *new dragdrop::DragAndDrop(script_starter(), windows::drop_windows(),
                                                       windows::system().files());
    return instance;
}

} // namespace

ScriptStarter& script_starter() {
    static ScriptStarter& instance = *new ScriptStarter;
    return instance;
}

plugin::Plugin& the_plugin() {
    static HostVocabulary vocabulary;
    static plugin::Plugin instance = [] {
        windows::report_crashes({plugin::crash_dump_start, log_crash});
        return plugin::Plugin(vocabulary, windows::system(), drops());
    }();
    return instance;
}

} // namespace vell::host
