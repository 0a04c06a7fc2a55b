#include "src/files/contents/text_conversion.h"

#include "src/files/contents/contents.h"
#include "src/files/contents/written_text.h"

#include <algorithm>
#include <array>
#include <string>

namespace vell::files {
namespace {

using params::Call;
using params::EncodedText;
using params::LineEndings;
using params::SwitchSet;
using params::TextEncoding;
using params::Unencodable;

// A text stays text unless an encoding is named.

template <typename Char>
void convert_line_ends(std::basic_string<Char>& text, const SwitchSet& switches,
                       LineEndings otherwise) {
    const LineEndings wanted = line_endings_of(switches, Call::not_given);
    if (wanted != LineEndings::Keep)
        return convert_line_endings(text, wanted);
    // One kind of line end first, so that no pair gets a second line feed.
    convert_line_endings(text, LineEndings::CrLfToCr);
    std::ranges::replace(text, Char('\n'), Char('\r'));
    convert_line_endings(text, otherwise);
}

} // namespace

Result<void> convert_from_host_text(Call& call, System&) {
    const SwitchSet switches = call.switches();
    const TextEncoding encoding = params::contents_encoding_of(switches, params::no_encoding);
    std::u16string text = call.text(1);
    convert_line_ends(text, switches, LineEndings::CrToCrLf);
    if (encoding == params::no_encoding) {
        call.set_text(text);
        return {};
    }
    const std::string bytes = VELL_TRY(encode_contents(call, text, encoding));
    call.set_decoded_text(std::array{EncodedText{bytes, TextEncoding::BytesOnly}},
                          LineEndings::Keep);
    return {};
}

Result<void> convert_to_host_text(Call& call, System&) {
    const SwitchSet switches = call.switches();
    const TextEncoding encoding = params::contents_encoding_of(switches, params::no_encoding);
    std::u16string text = call.text(1);
    // Bytes of line ends are characters of their own in every encoding.
    convert_line_ends(text, switches, LineEndings::Keep);
    if (encoding == params::no_encoding) {
        call.set_text(text);
        return {};
    }
    std::string bytes = VELL_TRY(call.encode(text, TextEncoding::BytesOnly, Unencodable::Refuse));
    give_bytes(call, std::move(bytes), encoding);
    return {};
}

} // namespace vell::files
