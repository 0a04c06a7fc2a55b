#include "src/windows/process/library.h"

#include <windows.h>

namespace vell::windows {

void* function_of_library(const wchar_t* library, const char* name) {
    const HMODULE module = GetModuleHandleW(library);
    return module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
}

} // namespace vell::windows
