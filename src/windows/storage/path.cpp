#include "src/windows/storage/path.h"

#include "src/windows/handle.h"
#include "src/windows/process/library.h"
#include "src/windows/text.h"

#include <array>

namespace vell::windows {

namespace {

// Lengths from which a path may be refused unless it has the "\\?\" prefix: MAX_PATH less the room
// for a short name that folders need.
constexpr std::size_t long_path_length = MAX_PATH - 12;

} // namespace

std::wstring win32_path(const params::NativePath& path) {
    std::wstring wide = to_wide(path.wide);
    if (wide.size() < long_path_length || wide.starts_with(L"\\\\?\\") ||
        wide.starts_with(L"\\\\.\\"))
        return wide;
    const Result<std::wstring> full = full_wide_path(wide);
    if (!full)
        return wide; // the call that gets it reports what is wrong with it
    return without_length_limit(*full);
}

std::wstring without_length_limit(const std::wstring& full_path) {
    if (full_path.starts_with(L"\\\\?\\"))
        return full_path;
    return full_path.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full_path.substr(2)
                                          : L"\\\\?\\" + full_path;
}

Result<std::wstring> full_wide_path(const std::wstring& path) {
    std::wstring full(path.size() + MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        if (length == 0)
            return Failure{last_error()};
        const bool complete = length < full.size();
        full.resize(length);
        if (complete)
            return full;
    }
}

Result<std::wstring> temporary_folder() {
    std::array<wchar_t, MAX_PATH + 2> path{};
    // Where Windows has it, a service gets a folder that users have no access to.
    using TempPath = DWORD(WINAPI*)(DWORD, LPWSTR);
    static const auto newer =
        reinterpret_cast<TempPath>(function_of_library(L"kernel32.dll", "GetTempPath2W"));
    const TempPath temp_path = newer ? newer : &GetTempPathW;
    const DWORD length = temp_path(path.size(), path.data());
    if (length == 0 || length >= path.size())
        return Failure{last_error()};
    return std::wstring(path.data(), length);
}

} // namespace vell::windows
