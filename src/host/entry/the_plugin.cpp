#include "src/host/entry/the_plugin.h"

#include "src/host/entry/host_vocabulary.h"
#include "src/windows/dragdrop/drop_windows.h"
#include "src/windows/process/crash_report.h"
#include "src/windows/process/library.h"
#include "src/windows/process/log_file.h"
#include "src/windows/system.h"

#include <vector>

namespace vell::host {
namespace {

void log_crash(std::string_view line) {
    if (is_server_host(the_plugin().state.application_type))
        the_plugin().log(line);
}

// The policy beside the plug-in, read once; null without one. Never destroyed: its log may still be
// written when the process ends.
policy::Guard* guard() {
    static policy::Guard* const instance = [] {
        std::vector<std::string_view> functions;
        for (const plugin::FunctionRow& row : plugin::function_rows())
            functions.push_back(row.name());
        const policy::PolicyPlace place{
            windows::folder_of_library(reinterpret_cast<const void*>(&guard)),
            windows::own_log_folder};
        return policy::guard_of(place, windows::system(), functions).release();
    }();
    return instance;
}

System& system_of_functions() {
    return guard() ? guard()->system() : windows::system();
}

// Never destroyed, as the windows that it serves.
dragdrop::DragAndDrop& drops() {
    static auto& instance = *new dragdrop::DragAndDrop(script_starter(), windows::drop_windows(),
                                                       system_of_functions().files());
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
        return plugin::Plugin(vocabulary, system_of_functions(), drops(), guard());
    }();
    return instance;
}

} // namespace vell::host
