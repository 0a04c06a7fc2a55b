#include "src/files/contents/written_text.h"

namespace vell::files {

using params::Call;
using params::TextEncoding;
using params::Unencodable;

Result<std::string> encode_contents(Call& call, std::u16string_view text, TextEncoding encoding) {
    return call.encode(text, encoding,
                       encoding == TextEncoding::AsciiMac ? Unencodable::Refuse
                                                          : Unencodable::Replace);
}

} // namespace vell::files
