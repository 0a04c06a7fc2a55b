// Icons in programs and libraries. Windows only.
#pragma once

#include "src/base/result.h"

#include <string>

namespace vell::windows {

// An icon with all its pictures, as an icon file. Indexes from 0 on count a file's icons, negative
// ones are an icon's number. NothingFound where there is none.
Result<std::string> icon_resource(const std::wstring& path, int index);

} // namespace vell::windows
