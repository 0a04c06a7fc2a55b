// Links for tests. Windows only.
#pragma once

#include <string>

namespace vell::test {

// Makes a junction; in Wine, which makes none, a symbolic link of the system below.
bool make_link(const std::wstring& link, const std::wstring& target);

} // namespace vell::test
