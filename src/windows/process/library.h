// Libraries that are in the process already, and their functions. Windows only.
#pragma once

#include "src/windows/handle.h"

#include <string>

namespace vell::windows {

// By name; null where the library is not loaded or has no such function.
void* function_of_library(const wchar_t* library, const char* name);

// Of the library that holds this address: the folder that it was loaded from, which ends with "\";
// a reference that keeps it loaded; and that it stays loaded as long as the process lives.
std::u16string folder_of_library(const void* address);
UniqueModule reference_on_library(const void* address);
void keep_library(const void* address);

} // namespace vell::windows
