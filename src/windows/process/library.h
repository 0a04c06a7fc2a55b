// Functions of libraries that are in the process already. Windows only.
#pragma once

namespace vell::windows {

// By name; null where the library is not loaded or has no such function.
void* function_of_library(const wchar_t* library, const char* name);

} // namespace vell::windows
