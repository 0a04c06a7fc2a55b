#include "src/files/written_text.h"

namespace vell::files {

using params::Call;
using params::TextEncoding;
using params::Unencodable;

Result<std::string> encode_contents(Call& call, std::u16string_view text, TextEncoding encoding) {
    return call.encode(text, encoding,
                       encoding == TextEncoding::AsciiMac ? Unencodable::Refuse
                                                          : Unencodable::Replace);
}

Result<void> check_new_name(const params::NativePath& path) {
    const std::u16string_view name = path.wide;
    if (name.ends_with(u'.') || name.ends_with(u' '))
        return Failure{ErrorCode::BadName};
    return {};
}

} // namespace vell::files
