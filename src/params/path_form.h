// Paths as a result: native, or in the host's form.
#pragma once

#include "src/params/switches.h"

#include <string>

namespace vell::params {

// "C:\a\b" as "filewin:/C:/a/b", which all functions take back; "\\server\share\a" as
// "file://server/share/a", which those do that accept HostForms. A "\\?\" prefix is dropped.
std::u16string host_form(std::u16string_view native);

// One native path as the switches want it: in the host's form with "-FileMakerPathFormat".
std::u16string path_result(const SwitchSet& switches, std::u16string native);

} // namespace vell::params
