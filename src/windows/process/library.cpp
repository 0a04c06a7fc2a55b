#include "src/windows/process/library.h"

#include "src/windows/text.h"

#include <windows.h>

namespace vell::windows {

void* function_of_library(const wchar_t* library, const char* name) {
    const HMODULE module = GetModuleHandleW(library);
    return module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
}

namespace {

HMODULE library_with(const void* address, DWORD flags) {
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags,
                       static_cast<const wchar_t*>(address), &library);
    return library;
}

} // namespace

std::u16string folder_of_library(const void* address) {
    std::wstring path(32'768, L'\0');
    const DWORD length =
        GetModuleFileNameW(library_with(address, GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT),
                           path.data(), static_cast<DWORD>(path.size()));
    path.resize(length);
    path.resize(path.rfind(L'\\') + 1);
    return to_utf16(path);
}

UniqueModule reference_on_library(const void* address) {
    return UniqueModule(library_with(address, 0));
}

void keep_library(const void* address) {
    library_with(address, GET_MODULE_HANDLE_EX_FLAG_PIN);
}

} // namespace vell::windows
