// What the dispatcher adds to the host calls that a function cannot do without.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "console/fmwrapper/control.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace vell::bench {
namespace {

// Stores a literal as a function does.
void store_bare(fm::Data* result, std::string_view value) {
    fm::Status status;
    fm::Text* text = FM_Text_Constructor1(&status);
    FM_Text_AssignWithLength(text, value.data(), static_cast<std::uint32_t>(value.size()), 4,
                             &status);
    const fm::Locale* locale = FM_Data_GetLocale(result, &status);
    FM_Data_SetAsText(result, text, locale, 1, &status);
    FM_Text_Delete(text, &status);
}

// The host calls of VlFile_VersionAutoUpdate, and nothing else.
void bare_auto_update(const fm::DataVect* parameters, fm::Data* result) {
    fm::Status status;
    FM_DataVect_Size(parameters, &status);
    store_bare(result, "14000000");
}

// The host calls of VlFile_Version( "-getversionstring" ).
void bare_version(const fm::DataVect* parameters, fm::Data* result) {
    fm::Status status;
    FM_DataVect_Size(parameters, &status);
    const fm::Text* switches = FM_DataVect_AtAsText(parameters, 0, &status);
    const std::uint32_t size = FM_Text_GetSize(switches, &status);
    std::array<char, 2001> bytes;
    FM_Text_GetBytes(switches, bytes.data(), bytes.size(), 0, size, 4, &status);
    store_bare(result, "14.0");
}

std::uint64_t calls_made(const std::function<void()>& work) {
    const std::uint64_t before = StandIn_CallCount();
    work();
    return StandIn_CallCount() - before;
}

Row row(const char* name, double goal, std::int16_t id,
        void (*bare)(const fm::DataVect*, fm::Data*)) {
    FunctionCall call(id, {u"-getversionstring"});
    const auto ours = [&] {
        call.dispatch();
    };
    const auto peer = [&] {
        bare(call.parameters(), call.result());
    };
    const std::uint64_t calls = calls_made(ours);
    if (calls != calls_made(peer)) {
        std::fprintf(stderr, "%s: the peer makes other host calls than the function\n", name);
        std::exit(2);
    }
    const Timing timing = compare(ours, peer);
    return {name, timing.ours_ns, timing.peer_ns, goal,
            "peer: the same " + std::to_string(calls) + " host calls, bare"};
}

} // namespace

std::vector<Row> dispatch_rows() {
    return {row("dispatch (VlFile_VersionAutoUpdate)", 1.3, 9002, bare_auto_update),
            row("dispatch and two switches looked for (VlFile_Version)", 0, 1, bare_version)};
}

} // namespace vell::bench
