#include "src/host/vocabulary/archive_functions.h"

#include "src/archive/zip_functions.h"
#include "src/host/bridge/host_values.h"

namespace vell::host {
namespace {

std::u16string decode_name(std::string_view bytes, params::TextEncoding encoding) {
    Text text;
    text.assign_bytes(bytes, encoding);
    return text.to_utf16();
}

} // namespace

Result<void> unzip(params::Call& call) {
    return archive::unzip(call, archive::system_archives(), decode_name);
}

Result<void> get_zip_info(params::Call& call) {
    return archive::get_zip_info(call, archive::system_archives(), decode_name);
}

} // namespace vell::host
