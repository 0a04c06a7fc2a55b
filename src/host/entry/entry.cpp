// The plug-in's one exported function.
#include "src/host/bridge/call_record.h"
#include "src/host/entry/running_calls.h"
#include "src/host/entry/the_plugin.h"
#include "src/windows/process/library.h"

namespace vell::host {
namespace {

std::u16string_view text_at(fm::PtrType address) {
    const auto* text = reinterpret_cast<const char16_t*>(address);
    return text ? std::u16string_view(text) : std::u16string_view();
}

void handle(CallRecord& record) {
    plugin::Plugin& plugin = the_plugin();
    const ScriptStarter::ServedMessage served(record);
    switch (static_cast<plugin::Message>(record.message)) {
    case plugin::Message::StartUp:
        record.result = static_cast<fm::PtrType>(
            plugin.start_up(record.api_version, record.parameter1, text_at(record.parameter2)));
        break;
    case plugin::Message::Idle:
        plugin.idle(record.parameter1);
        break;
    case plugin::Message::ShutDown:
        if (!plugin.shut_down())
            windows::keep_library(reinterpret_cast<const void*>(&handle));
        outlive_running_calls();
        break;
    case plugin::Message::Preferences:
        plugin.show_about_box();
        break;
    case plugin::Message::StringQuery:
        if (auto* buffer = reinterpret_cast<char16_t*>(record.result))
            plugin::answer_string_query(record.parameter1,
                                        {buffer, static_cast<std::size_t>(record.parameter3)});
        break;
    case plugin::Message::SessionShutdown:
        plugin.session_shut_down(record.parameter2);
        break;
    case plugin::Message::FileShutdown:
        plugin.file_shut_down(record.parameter2, record.parameter3);
        break;
    }
}

} // namespace
} // namespace vell::host

extern "C" __declspec(dllexport) void FMExternCallProc(vell::host::CallRecord* record) {
    if (!record)
        return;
    try {
        vell::host::handle(*record);
    } catch (...) { // no exception reaches the host
    }
}
