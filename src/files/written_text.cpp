#include "src/files/written_text.h"

namespace vell::files {

using params::Call;
using params::TextEncoding;
using params::Unencodable;

TextEncoding chosen_encoding(Call& call, std::size_t step_index, TextEncoding otherwise) {
    const std::int32_t option = call.step_option(step_index);
    if (option != Call::not_given)
        return static_cast<TextEncoding>(option);
    return params::contents_encoding_of(call.switches(), otherwise);
}

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
