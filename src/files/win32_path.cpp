#include "src/files/win32_path.h"

#include "src/base/win32_text.h"

#include <windows.h>

namespace vell::files {
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
    std::wstring full(wide.size() + MAX_PATH, L'\0');
    const DWORD length =
        GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0 || length >= full.size())
        return wide; // the call that gets it reports what is wrong with it
    full.resize(length);
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

} // namespace vell::files
