#include "bench/peers.h"

#include "src/windows/handle.h"

#include <algorithm>
#include <chrono>

namespace vell::bench {
namespace {

std::wstring environment(const wchar_t* name) {
    std::wstring value(32'767, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

} // namespace

bool has_sample_files() {
    return !environment(L"VELL_BENCH_DATA").empty();
}

std::wstring sample_path(const wchar_t* name) {
    return environment(L"VELL_BENCH_DATA") + L"\\" + name;
}

std::vector<std::wstring> sample_files(const wchar_t* folder, const wchar_t* pattern) {
    return files_of(sample_path(folder), pattern);
}

std::vector<std::wstring> files_of(const std::wstring& folder, const wchar_t* pattern) {
    std::vector<std::wstring> paths;
    const std::wstring start = folder + L"\\";
    WIN32_FIND_DATAW entry;
    const UniqueFind search(FindFirstFileW((start + pattern).c_str(), &entry));
    if (!search)
        return paths;
    do
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            paths.push_back(start + entry.cFileName);
    while (FindNextFileW(search.get(), &entry));
    return paths;
}

std::wstring fresh_folder() {
    static int count = 0;
    const std::wstring path = sample_path(L"made\\") + std::to_wstring(GetTickCount64()) + L"-" +
                              std::to_wstring(++count);
    CreateDirectoryW(path.c_str(), nullptr);
    return path;
}

double native_ns(const wchar_t* name) {
    const std::wstring value = environment(name);
    return value.empty() ? 0 : std::stod(value);
}

double time_of(const std::function<void()>& work, const std::function<void()>& reset) {
    using Clock = std::chrono::steady_clock;
    constexpr double short_ns = 0.3e9;
    const auto once = [&] {
        if (reset)
            reset();
        const auto start = Clock::now();
        work();
        return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
    };
    const double first = once();
    return first < short_ns ? std::min(first, once()) : first;
}

Timing between_peers(const std::function<void()>& ours, const std::function<void()>& peer,
                     const std::function<void()>& reset) {
    const double before = time_of(peer, reset);
    const double between = time_of(ours, reset);
    return {between, (before + time_of(peer, reset)) / 2};
}

} // namespace vell::bench
