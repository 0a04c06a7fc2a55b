// The plug-in's one exported function.
#include "src/host/bridge/call_record.h"
#include "src/host/lifecycle/lifecycle.h"
#include "src/host/lifecycle/plugin_state.h"

namespace vell::host {
namespace {

std::u16string_view text_at(fm::PtrType address) {
    const auto* text = reinterpret_cast<const char16_t*>(address);
    return text ? std::u16string_view(text) : std::u16string_view();
}

void handle(CallRecord& record) {
    plugin_state().start_script = record.start_script;
    plugin_state().unsafe_call = record.unsafe != 0;
    plugin_state().instance = record.instance;
    switch (static_cast<Message>(record.message)) {
    case Message::StartUp:
        record.result = static_cast<fm::PtrType>(
            start_up(record.api_version, record.parameter1, text_at(record.parameter2)));
        break;
    case Message::Idle:
        idle(record.parameter1);
        break;
    case Message::ShutDown:
        shut_down();
        break;
    case Message::Preferences:
        show_about_box();
        break;
    case Message::StringQuery:
        if (auto* buffer = reinterpret_cast<char16_t*>(record.result))
            answer_string_query(record.parameter1,
                                {buffer, static_cast<std::size_t>(record.parameter3)});
        break;
    case Message::SessionShutdown:
        session_shut_down(record.parameter2);
        break;
    case Message::FileShutdown:
        file_shut_down(record.parameter2, record.parameter3);
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
