// The functions on archives whose names the host's text decodes.
#pragma once

#include "src/params/call.h"

namespace vell::host {

Result<void> unzip(params::Call& call);
Result<void> get_zip_info(params::Call& call);

} // namespace vell::host
