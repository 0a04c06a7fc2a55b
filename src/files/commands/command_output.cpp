#include "src/files/commands/command_output.h"

#include <array>

namespace vell::files {

using params::EncodedText;
using params::LineEndings;
using params::TextEncoding;

void CommandOutput::append(std::string_view bytes) {
    if (encoding_ == TextEncoding::Utf8)
        utf8_.append(bytes);
    else
        bytes_ += bytes;
}

void CommandOutput::hand_over(params::Call& call) {
    if (encoding_ != TextEncoding::Utf8)
        return call.set_decoded_text(std::array{EncodedText{bytes_, encoding_}}, LineEndings::Host);
    std::u16string& text = utf8_.finish();
    params::convert_line_endings(text, LineEndings::Host);
    call.set_text(text);
}

} // namespace vell::files
