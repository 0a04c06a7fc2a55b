// Paths as Windows calls take them. Windows only.
#pragma once

#include "src/params/paths.h"

#include <string>

namespace vell::windows {

// The path in the form that has no limit of length ("\\?\"), where it needs it.
std::wstring win32_path(const params::NativePath& path);

// A full path in that form; one that has it already stays as it is.
std::wstring without_length_limit(const std::wstring& full_path);

// The path from its root, without "." and "..".
Result<std::wstring> full_wide_path(const std::wstring& path);

// The folder for temporary files of this process. Ends with a separator.
Result<std::wstring> temporary_folder();

} // namespace vell::windows
