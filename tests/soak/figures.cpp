#include "tests/soak/figures.h"

#include "console/fmwrapper/control.h"
#include "src/windows/handle.h"
#include "tests/soak/straight_line.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>

namespace vell::soak {
namespace {

std::uint64_t count_threads() {
    const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::uint64_t count = 0;
    for (BOOL is_one = Thread32First(snapshot.get(), &entry); is_one;
         is_one = Thread32Next(snapshot.get(), &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId())
            ++count;
    return count;
}

// One handle of any process, as the system lists them.
struct SystemHandle {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
struct SystemHandles {
    ULONG_PTR count;
    ULONG_PTR reserved;
    SystemHandle first;
};

std::uint64_t listed_handles() {
    using Query = LONG(WINAPI*)(ULONG kind, void* list, ULONG room, ULONG* size);
    constexpr ULONG extended_handle_information = 64;
    const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::uint64_t> list(1U << 19U);
    ULONG size = 0;
    if (!query || query(extended_handle_information, list.data(),
                        static_cast<ULONG>(list.size() * sizeof list[0]), &size) != 0)
        return 0;
    const auto* handles = reinterpret_cast<const SystemHandles*>(list.data());
    return static_cast<std::uint64_t>(std::count_if(
        &handles->first, &handles->first + handles->count,
        [](const SystemHandle& handle) { return handle.process == GetCurrentProcessId(); }));
}

// Wine counts none, but lists them.
std::uint64_t count_handles() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0 ? count
                                                                           : listed_handles();
}

template <typename Read>
std::vector<double> settled(const std::vector<Figures>& samples, Read read) {
    std::vector<double> values;
    for (std::size_t i = samples.size() / 10; i < samples.size(); ++i)
        values.push_back(static_cast<double>(read(samples[i])));
    return values;
}

bool is_within(const char* name, double growth, double bound, double unit) {
    const bool is_fine = growth <= bound;
    std::printf("  %-14s %+9.2f of %.2f%s\n", name, growth / unit, bound / unit,
                is_fine ? "" : "   GROWS");
    return is_fine;
}

} // namespace

Figures current_figures() {
    Figures figures;
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof memory;
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory))
        figures.private_bytes = memory.PagefileUsage; // the same on Windows, and there in Wine
    figures.handles = count_handles();
    figures.threads = count_threads();
    figures.host_objects = StandIn_TotalLiveObjects();
    return figures;
}

std::string text_of(const Figures& figures) {
    char text[200];
    std::snprintf(text, sizeof text,
                  "%.1f MB private, %llu handles, %llu threads, %lld host objects",
                  static_cast<double>(figures.private_bytes) / megabyte,
                  static_cast<unsigned long long>(figures.handles),
                  static_cast<unsigned long long>(figures.threads),
                  static_cast<long long>(figures.host_objects));
    return text;
}

bool tell_growth(const std::vector<Figures>& samples, const Bounds& bounds) {
    std::printf("Growth from the tenth percent of %zu samples on, by a straight line:\n",
                samples.size());
    bool is_fine = is_within(
        "private MB", growth_of(settled(samples, [](const Figures& f) { return f.private_bytes; })),
        bounds.private_bytes, megabyte);
    is_fine &= is_within("handles",
                         growth_of(settled(samples, [](const Figures& f) { return f.handles; })),
                         bounds.handles, 1);
    is_fine &= is_within("threads",
                         growth_of(settled(samples, [](const Figures& f) { return f.threads; })),
                         bounds.threads, 1);
    std::int64_t objects = 0;
    for (const Figures& sample : samples)
        objects = std::max(objects, sample.host_objects);
    return is_within("host objects", static_cast<double>(objects), 0, 1) && is_fine;
}

} // namespace vell::soak
